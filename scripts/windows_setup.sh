# Sourced by scripts/test_windows after setup.sh: what the Windows builds and tests need besides
# packages. Everything is below build/.

libraries=$root/build/windows-libraries
wine_state=$root/build/wine

# private_apt COMMAND...: apt with separate lists, which also contain source packages and i386 packages,
# from the mirrors that this machine uses.
private_apt() {
    local apt=$root/build/apt
    local options=(-qq -o Dir::Etc::sourcelist="$apt/sources.list" -o Dir::Etc::sourceparts=/dev/null
        -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache"
        -o APT::Architectures::=amd64 -o APT::Architectures::=i386 -o APT::Sandbox::User=)
    if [ ! -f "$apt/updated" ]; then
        mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial"
        debian_sources >"$apt/sources.list"
        # Continues if an index cannot be fetched, because the packages may be in another one.
        apt-get "${options[@]}" update >"$apt/update.log" 2>&1 || true
        touch "$apt/updated"
    fi
    apt-get "${options[@]}" "$@"
}

# The Debian mirrors that this machine uses, as lines for sources.list.
debian_sources() {
    local key=signed-by=/usr/share/keyrings/debian-archive-keyring.gpg
    local format='$(CREATED_BY) $(ORIGIN) $(COMPONENT) $(REPO_URI) $(RELEASE)'
    [ -n "$(apt-get indextargets --format "$format")" ] || as_root apt-get update -qq
    apt-get indextargets --format "$format" | sort -u | while read -r kind origin component uri release; do
        [ "$kind $origin $component" = "Packages Debian main" ] || continue
        echo "deb-src [$key] $uri $release main"
        echo "deb [arch=i386 $key] $uri $release main"
    done
}

# Unpacks the sources of the libraries that the Windows build compiles itself.
unpack_libraries() {
    local name
    for name in glew tinyxml duktape; do
        [ ! -e "$libraries/$name" ] || continue
        mkdir -p "$libraries/packages"
        (cd "$libraries/packages" && private_apt source "$name" >"$name.log" 2>&1) || {
            cat "$libraries/packages/$name.log" >&2
            return 1
        }
        mv "$libraries/packages/$name"-*/ "$libraries/$name"
    done
}

# Debian's 64-bit Wine also runs 32-bit programs if it finds the 32-bit libraries.
unpack_wine32() {
    local system=/usr/lib/x86_64-linux-gnu/wine dll=$wine_state/dll version
    [ ! -e "$dll/i386-windows" ] || return 0
    mkdir -p "$dll" "$wine_state/package"
    ln -sfn "$system/x86_64-unix" "$dll/x86_64-unix"
    ln -sfn "$system/x86_64-windows" "$dll/x86_64-windows"
    version=$(dpkg-query -W -f='${Version}' libwine)
    (cd "$wine_state/package" && private_apt download "libwine:i386=$version")
    dpkg --fsys-tarfile "$wine_state/package"/libwine_*.deb |
        tar -x -C "$wine_state/package" --wildcards '*/i386-windows/*'
    rm "$wine_state/package"/*.deb
    mv "$wine_state"/package/usr/lib/*/wine/i386-windows "$dll/"
}

# Ends the Wine server of the prefix.
end_wine() {
    WINEPREFIX=$wine_state/prefix /usr/lib/wine/wineserver64 -k 2>/dev/null || true
    WINEPREFIX=$wine_state/prefix /usr/lib/wine/wineserver64 -w 2>/dev/null || true
}

# Starts a virtual display and Wine with its own prefix. Both end with the script.
start_wine() {
    local number=$wine_state/display.$$
    mkdir -p "$wine_state"
    end_wine # a server left from a run without a display would be used again
    Xvfb -displayfd 3 -screen 0 640x480x24 -nolisten tcp 3>"$number" >/dev/null 2>&1 &
    xvfb=$!
    trap 'end_wine; kill "$xvfb" 2>/dev/null' EXIT
    while [ ! -s "$number" ]; do
        kill -0 "$xvfb" # has it exited?
        sleep 0.2
    done
    DISPLAY=:$(cat "$number")
    export DISPLAY
    rm "$number"
    [ -e "$wine_state/prefix/system.reg" ] ||
        timeout 300 "$root/scripts/wine" wineboot -i >"$wine_state/wineboot.log" 2>&1
    # The share \\localhost\c$, which Windows has by itself.
    mkdir -p "$wine_state/prefix/dosdevices/unc/localhost"
    ln -sfn ../../../drive_c "$wine_state/prefix/dosdevices/unc/localhost/c$"
}

# Whether Wine can run 32-bit programs here, as the prefix's setup has done then. Some processors and
# virtual machines cannot.
runs_32_bit_programs() {
    [ -e "$wine_state/prefix/drive_c/windows/syswow64/kernel32.dll" ]
}
