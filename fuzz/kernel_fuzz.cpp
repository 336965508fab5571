// Target: a kernel text, parsed into the model and translated to both shaders.
#include "engine/program/glsl_generator.h"
#include "fuzz/fuzz_support.h"
#include "pixelbender/pbk_parser.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::inCommand([&] {
        pbKernelInfo kernel;
        PBKParser(fuzz::textOf(data, size), kernel).parseKernel();
        NarrowString vertexText;
        NarrowString fragmentText;
        generateKernelShaders(kernel, vertexText, fragmentText, 18);
        fuzz::require(fragmentText.find(kernel.shaderText) != NarrowString::npos,
                      "the program lacks the kernel's body");
    });
    return 0;
}
