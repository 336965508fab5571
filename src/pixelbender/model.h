// The contents of a kernel or graph file: plain values, built by the readers, passed to the
// constructor of the graph and destroyed right after it.
//
// Copies of kernels and their parts are deep; a pbGraphInfo cannot be copied. Text is on the host's
// heap, so these objects need a running command.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "pixelbender/source_map.h"
#include "pixelbender/types.h"
#include "support/text.h"

// A fixed name field: a zero-terminated text of at most 31 bytes.
using pbName = std::array<char, 32>;

// Writes the field, cut at 31 bytes; null gives an empty name.
void copyName(pbName& field, std::string_view source);
void copyName(pbName& field, const char* source);

// The text of a field.
inline std::string_view nameText(const pbName& field) {
    return field.data();
}

// An immutable text that is shared by its copies. All declarators of a declaration share its texts;
// deep copies would take time proportional to the length of the text times their number.
class pbText {
public:
    pbText& operator=(std::string_view source);
    std::string_view view() const { return text_ == nullptr ? std::string_view() : *text_; }
    const char* c_str() const { return text_ == nullptr ? "" : text_->c_str(); }

private:
    std::shared_ptr<const NarrowString> text_;
};

// Up to 16 components; the type's scalar kind decides which member is used. Component k of a bool
// type is byte k. Everything past the last component is zero.
union pbValue {
    std::array<std::int32_t, 16> ints{};
    std::array<float, 16> floats;
    std::array<std::uint8_t, 16> bytes;
};

// An optional value of a file; all zero when it is not set.
struct pbValueSlot {
    bool isSet = false;
    pbValue value;
};

// A point as a fraction of the layer's size: 0.5 is the centre.
struct pbPointDefault {
    bool isSet = false;
    float x = 0;
    float y = 0;
};

// An input, output or dependent.
struct pbVariable {
    pbVariable() = default;
    pbVariable(pbElementType variableType, std::string_view variableName);
    virtual ~pbVariable() = default;
    pbVariable(const pbVariable&) = default;
    pbVariable(pbVariable&&) = default;
    pbVariable& operator=(const pbVariable&) = default;
    pbVariable& operator=(pbVariable&&) = default;

    void setName(std::string_view variableName);

    pbElementType type = pbTypeNone;
    pbName name{};
    // The full name, by which the variable is found in the shader.
    NarrowString wholeName;
};

struct pbParameter : pbVariable {
    pbValueSlot defaultValue;
    pbValueSlot minValue;
    pbValueSlot maxValue;
    pbParameterType parameterType = pbParameterNone;
    pbUIControl aeUIControl = pbControlNone;
    pbName displayName{};
    pbName aeDisplayName{};
    pbPointDefault aePointRelativeDefaultValue;
    pbText enumValues;    // the file's raw text
    pbText aePopupString; // the file's raw text
};

struct pbMetadata {
    pbMetadata() = default;
    virtual ~pbMetadata() = default;
    pbMetadata(const pbMetadata&) = default;
    pbMetadata(pbMetadata&&) = default;
    pbMetadata& operator=(const pbMetadata&) = default;
    pbMetadata& operator=(pbMetadata&&) = default;

    pbName name{};
    std::int32_t languageVersion = 0; // read, but not used
    pbName namespaceName{};
    pbName vendor{};
    std::int32_t version = 0;
    NarrowString description;
};

struct pbKernelInfo : pbMetadata {
    HostVector<pbVariable> inputs; // in order of declaration, as the other vectors
    pbVariable output;             // the last declared one
    HostVector<pbVariable> dependents;
    HostVector<pbParameter> parameters;
    NarrowString shaderText; // the kernel's body, ready to be part of a GLSL program
};

struct pbGraphInfo;

// A node of a graph: runs the first kernel whose name equals its own.
struct pbgNodeInfo {
    // Translates evaluateParametersText into evaluateParametersCode. `map`, which may be null, gets
    // the offsets of the code in the text.
    void parse(const pbGraphInfo& graph, SourceMap* map = nullptr);

    pbName id{}; // used by connections and parameter texts
    pbName name{};
    pbName vendor{};
    pbName namespaceName{};
    std::int32_t version = 0;
    NarrowString evaluateParametersText;
    pbName clientID{};
    NarrowString evaluateParametersCode;
};

enum pbConnectionKind : std::int32_t {
    pbConnectionNone,
    ImageToNode,
    NodeToNode,
    ToOutputImage,
};

struct pbConnection {
    pbName from{};       // the image's name or the source node's id
    pbName fromOutput{}; // empty for an image
    pbName to{};         // the image's name or the target node's id
    pbName toInput{};    // empty for an image
    pbConnectionKind kind = pbConnectionNone;
};

struct pbGraphInfo : pbMetadata {
    pbGraphInfo() = default;
    pbGraphInfo(const pbGraphInfo&) = delete;
    pbGraphInfo& operator=(const pbGraphInfo&) = delete;

    // Parses the kernel sources and translates the nodes' parameter texts.
    void parseContents();

    // Whether the graph has a parameter of exactly that name; valid after parseContents.
    bool hasParameter(std::string_view parameterName) const;

    HostVector<pbParameter> parameters; // the graph's own
    HostVector<pbVariable> inputs;
    pbVariable output;
    HostVector<pbKernelInfo> kernels; // one for each source, in the same order
    HostVector<NarrowString> kernelSources;
    HostVector<pbgNodeInfo> nodes; // in file order, as the connections
    HostVector<pbConnection> connections;

private:
    HostVector<std::string_view> sortedParameterNames_;
};

// The name of a graph's parameter in a program, which must differ from the kernel's own names: the
// prefix `tveg_`, or `_tveg` for a name that begins with `_`.
NarrowString graphParameterName(std::string_view name);
