// Adds the findings about a kernel, whose text may be a part of a graph file.
#pragma once

#include <string>

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/diagnostics/kernel_tokens.h"
#include "pixelbender/source_map.h"

namespace pbhost {

class Findings {
public:
    // `textMap` leads from the kernel's text to the file; null: the text is the file. Both must
    // outlive the object.
    Findings(DiagnosticList& list, const SourceMap* textMap) : list_(list), map_(textMap) {}

    Diagnostic& warn(const char* rule, std::size_t offset, std::size_t length,
                     std::string message) {
        return add(Severity::Warning, rule, offset, length, std::move(message));
    }
    Diagnostic& warn(const char* rule, const KernelToken& token, std::string message) {
        return warn(rule, token.offset, token.text.size(), std::move(message));
    }
    Diagnostic& error(const char* rule, const KernelToken& token, std::string message) {
        return add(Severity::Error, rule, token.offset, token.text.size(), std::move(message));
    }
    // An error about the kernel as a whole.
    Diagnostic& error(const char* rule, std::size_t offset, std::string message) {
        return add(Severity::Error, rule, offset, 1, std::move(message));
    }

    // The line of an offset.
    std::size_t lineOf(std::size_t offset) const {
        return list_.source().placeOf(inFile(offset)).line;
    }

private:
    std::size_t inFile(std::size_t offset) const {
        return map_ == nullptr ? offset : map_->sourceOf(offset).value_or(0);
    }
    Diagnostic& add(Severity severity, const char* rule, std::size_t offset, std::size_t length,
                    std::string message) {
        return list_.add(severity, rule, inFile(offset), length, std::move(message));
    }

    DiagnosticList& list_;
    const SourceMap* map_;
};

} // namespace pbhost
