// Target: the preference with the root folder, under which the module searches for a moved file.
// The input is the text of the preference.
#include "fuzz/fuzz_support.h"
#include "pbhost/process/temporary_files.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // All paths are below a temporary folder, so that the search does not walk the whole file
    // system.
    static const pbhost::TemporaryFolder folder;
    static fuzz::Instance& instance = *new fuzz::Instance;
    const std::string value = folder.path + "/" + std::string(fuzz::textOf(data, size));
    instance.host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", value);
    instance.open(std::string_view("\1\0\0\0\0\0\0\0/none/lost.pbk", 23));
    const std::string written = instance.close();
    fuzz::require(fuzz::pathOfBlock(written) == "/none/lost.pbk", "the path changed");
    return 0;
}
