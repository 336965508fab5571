// Target: the effect's flat block of a project, both versions, opened and flattened again by the
// module's commands. The written block must contain the same path.
#include "fuzz/fuzz_support.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::Instance& instance = *new fuzz::Instance;
    const std::string_view block = fuzz::textOf(data, size);
    instance.open(block);
    const std::string written = instance.close();
    fuzz::require(written.starts_with(std::string_view("\1\0\0\0", 4)), "not of version 1");
    fuzz::require(fuzz::pathOfBlock(written) == fuzz::pathOfBlock(block), "the path changed");
    fuzz::require(written.size() == fuzz::pathOfBlock(block).size() + 9, "the size is wrong");
    return 0;
}
