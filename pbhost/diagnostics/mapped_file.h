// A kernel or graph file with its generated programs, and where their texts come from in the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/program/glsl_generator.h"
#include "pbhost/diagnostics/source_text.h"
#include "pbhost/diagnostics/xml_outline.h"
#include "pbhost/files/effect_file.h"
#include "pixelbender/source_map.h"

namespace pbhost {

// A piece of a generated text that was copied from the file.
struct CopiedText {
    std::size_t size = 0;
    SourceMap toFile; // empty if the places are not known
};

struct MappedProgram {
    std::string name;    // of the kernel; the id of a node
    bool isNode = false; // of a graph
    NarrowString vertex;
    NarrowString fragment;
    ProgramLayout layout;
    CopiedText body;
    CopiedText expressions;
    std::size_t kernelAt = 0; // offset of the kernel's name in the file, or of what is next to it
    std::size_t kernelLength = 0;
};

// What a place of a generated text is.
enum class Region { Prelude, Body, Expressions, Main };

// The region of a byte of a shader; `layout` is that of its stage.
Region regionOf(const MappedProgram& program, const ShaderLayout& layout, std::size_t offset);

// Needs a running command, which the file keeps.
class MappedFile {
public:
    // The file must outlive the object.
    explicit MappedFile(const EffectFile& effectFile);

    // The programs of the file: one of a kernel; one for each node of a graph with a kernel.
    std::size_t count() const;
    // Nothing for a node without a kernel.
    std::optional<MappedProgram> program(std::size_t index, std::uint32_t order) const;
    // The first program of the node with that id, or that of the kernel.
    std::optional<MappedProgram> programNamed(std::string_view name, std::uint32_t order) const;

    const EffectFile& file;
    const SourceText source;
    const XmlOutline outline; // of a graph; empty for a kernel

    // The document's elements that the model's kernels and nodes were read from; null if unknown.
    const XmlElement* kernelElement(std::size_t index) const;
    const XmlElement* nodeElement(std::size_t index) const;

private:
    CopiedText bodyOf(std::size_t kernel) const;
    CopiedText expressionsOf(std::size_t node) const;

    std::vector<const XmlElement*> kernelElements_; // those with a text, in order
    std::vector<const XmlElement*> nodeElements_;
};

// The map from the first text of `inner` to the last one of `outer`.
SourceMap chained(const SourceMap& inner, const SourceMap& outer);

} // namespace pbhost
