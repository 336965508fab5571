# Sourced by scripts/test_windows after setup.sh: what building and running for Windows needs beside
# the packages. Everything lies under build/, in lists and folders of its own.

libraries=$root/build/windows-libraries
wine_state=$root/build/wine

# private_apt COMMAND...: apt with lists of its own, which also know Debian's source packages and the
# packages of i386, from the mirrors that the machine itself uses.
private_apt() {
    local apt=$root/build/apt
    local options=(-qq -o Dir::Etc::sourcelist="$apt/sources.list" -o Dir::Etc::sourceparts=/dev/null
        -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache"
        -o APT::Architectures::=amd64 -o APT::Architectures::=i386 -o APT::Sandbox::User=)
    if [ ! -f "$apt/updated" ]; then
        mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial"
        debian_sources >"$apt/sources.list"
        # An index that cannot be had just now need not be the one with the packages.
        apt-get "${options[@]}" update >"$apt/update.log" 2>&1 || true
        touch "$apt/updated"
    fi
    apt-get "${options[@]}" "$@"
}

# The machine's own Debian mirrors, as lines of a list.
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

# Debian's 64-bit Wine runs 32-bit programs, too, once it finds the 32-bit half of its libraries.
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

# Ends the prefix's own server, whatever is left of it.
end_wine() {
    WINEPREFIX=$wine_state/prefix /usr/lib/wine/wineserver64 -k 2>/dev/null || true
    WINEPREFIX=$wine_state/prefix /usr/lib/wine/wineserver64 -w 2>/dev/null || true
}

# A display of its own, and Wine with a prefix for it. Both end with the script.
start_wine() {
    local number=$wine_state/display.$$
    mkdir -p "$wine_state"
    end_wine # one that is left from a run without a display would serve this run, too
    Xvfb -displayfd 3 -screen 0 640x480x24 -nolisten tcp 3>"$number" >/dev/null 2>&1 &
    xvfb=$!
    trap 'end_wine; kill "$xvfb" 2>/dev/null' EXIT
    while [ ! -s "$number" ]; do
        kill -0 "$xvfb" # has it ended?
        sleep 0.2
    done
    DISPLAY=:$(cat "$number")
    export DISPLAY
    rm "$number"
    [ -e "$wine_state/prefix/system.reg" ] ||
        timeout 300 "$root/scripts/wine" wineboot -i >"$wine_state/wineboot.log" 2>&1
}

# Whether Wine runs 32-bit programs here: its own setup has then run some. A processor or a virtual
# machine without 32-bit code cannot.
runs_32_bit_programs() {
    [ -e "$wine_state/prefix/drive_c/windows/syswow64/kernel32.dll" ]
}
