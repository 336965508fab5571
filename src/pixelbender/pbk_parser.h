// Reads a kernel's text into the model, and makes of its body the text that can stand in a GLSL
// program.
//
// This is no translator: declarations are copied into the model, and the little that GLSL cannot
// take is cut or replaced on the way; all else passes through token by token. Whether a kernel is
// valid is found out by the GLSL compiler. Nothing is reported: every text gives some model.
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

    // The model is filled, not owned; it should be freshly constructed, for nothing is cleared.
    PBKParser(std::string_view source, pbKernelInfo& model) : ShaderReader(source), info(&model) {}

    void parseKernel();

    pbKernelInfo* info;
};
