// Target: the preference with the root folder, under which the module searches for a moved file.
// The input is the text of the preference.
#include <algorithm>
#include <string>

#include "fuzz/fuzz_support.h"
#include "pbhost/process/temporary_files.h"
#include "support/utf.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // All paths are below a temporary folder, so that the search does not walk the whole file
    // system. A path that leaves the folder again takes seconds, so texts with two dots are left
    // out, as the module reads them: without bytes that are not UTF-8, and in longer forms, too.
    std::string_view text = fuzz::textOf(data, size);
    text = text.substr(0, text.find('\0')); // where the host's call ends it
    std::u16string wide;
    appendWide(text, wide);
    if (std::ranges::count(wide, u'.') > 1)
        return 0;
    static const pbhost::TemporaryFolder folder;
    static fuzz::Instance& instance = *new fuzz::Instance;
    const std::string value = folder.path + "/" + std::string(text);
    instance.host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", value);
    using namespace std::string_view_literals;
    instance.open("\1\0\0\0\0\0\0\0/none/lost.pbk\0"sv);
    const std::string written = instance.close();
    fuzz::require(fuzz::pathOfBlock(written) == "/none/lost.pbk", "the path changed");
    return 0;
}
