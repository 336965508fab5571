// The effect's block of a project file, of both versions, through the module's own commands. What
// the module writes again must hold the path that stands in the block.
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
