// What is known of a kernel or graph file: plain values, built by the readers, handed by reference
// to the graph's constructor and destroyed right after it.
//
// Kernels and their pieces copy deeply; a pbGraphInfo is built in place. Text lives on the host's
// heap, so these objects need a running command.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "pixelbender/types.h"
#include "support/text.h"

// A fixed name field: a zero-terminated text of at most 31 bytes.
using pbName = std::array<char, 32>;

// Writes the field; a longer source is cut to its first 31 bytes, a null source gives an empty
// name.
void copyName(pbName& field, std::string_view source);
void copyName(pbName& field, const char* source);

// The view of a field's text.
inline std::string_view nameText(const pbName& field) {
    return field.data();
}

// An immutable text that its copies share. A declaration hands its texts on to each of its
// declarators, so real copies would cost the length of the text times their number.
class pbText {
public:
    pbText& operator=(std::string_view source);
    std::string_view view() const { return text_ == nullptr ? std::string_view() : *text_; }
    const char* c_str() const { return text_ == nullptr ? "" : text_->c_str(); }

private:
    std::shared_ptr<const NarrowString> text_;
};

// Up to 16 components; the type's scalar kind tells which view holds them. Component k of a bool
// type is byte k. Everything past the last component is zero.
union pbValue {
    std::array<std::int32_t, 16> ints{};
    std::array<float, 16> floats;
    std::array<std::uint8_t, 16> bytes;
};

// A value that a file may give; all zero until it does.
struct pbValueSlot {
    bool isSet = false;
    pbValue value;
};

// A point in parts of the layer's size: 0.5 is the middle.
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
    // The name as the file has it, for whoever must find the variable in the shader.
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
    std::int32_t languageVersion = 0; // decides nothing
    pbName namespaceName{};
    pbName vendor{};
    std::int32_t version = 0;
    NarrowString description;
};

struct pbKernelInfo : pbMetadata {
    HostVector<pbVariable> inputs; // in order of declaration, as the other vectors
    pbVariable output;             // the last one declared
    HostVector<pbVariable> dependents;
    HostVector<pbParameter> parameters;
    NarrowString shaderText; // the kernel's body, ready to stand in a GLSL program
};

struct pbGraphInfo;

// A node of a graph: runs the first kernel whose name equals its own.
struct pbgNodeInfo {
    // Makes evaluateParametersCode of evaluateParametersText.
    void parse(const pbGraphInfo& graph);

    pbName id{}; // by which connections and parameter texts address it
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

    // Reads the kernels out of their sources and rewrites the nodes' parameter texts.
    void parseContents();

    // Whether the graph has a parameter of exactly that name; answers from parseContents on.
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

// The name under which a graph's parameter reaches a program, apart from the kernel's own names:
// `tveg_` in front, or `_tveg` in front of a name that begins with `_`.
NarrowString graphParameterName(std::string_view name);
