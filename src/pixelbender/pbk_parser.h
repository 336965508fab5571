// Reads a kernel's text into the model, and rewrites its body for use in a GLSL program.
//
// Declarations are copied into the model, and the few constructs that GLSL does not have are
// removed or replaced; all other tokens are kept. The GLSL compiler decides whether a kernel is
// valid. Nothing is reported: every text gives some model.
#pragma once

#include "pixelbender/model.h"
#include "pixelbender/shader_reader.h"

class PBKParser : public ShaderReader {
public:
    class GlobalParser;
    class MetaDataParser;
    class ParameterParser;
    class InputsParser;
    class DependentsParser;
    class EvaluateDependentsParser;
    class ParameterMetaDataParser;
    class ParameterMetaDataValueParser;

    // The model is filled, not owned; it should be newly constructed, because nothing is cleared.
    PBKParser(std::string_view source, pbKernelInfo& model) : ShaderReader(source), info(&model) {}

    // If `sourceMap` is set, it gets the offsets of the shader text in the source.
    void parseKernel();

    pbKernelInfo* info;
};
