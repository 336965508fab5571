// A stream: one animated value of a layer or an effect, or a named group of streams.
//
// A stream owns its children and its keyframes. References to it are a matter of the suites.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "hostkit/calls/live_object.h"
#include "sdk/aegp_types.h"

namespace hostkit {

struct Layer;

// A marker's texts, UTF-16.
struct Marker {
    std::u16string comment;
};

struct Outline { // of a mask
    bool isOpen = false;
    std::vector<AEGP_MaskVertex> vertices;
};

struct TextDocument {
    std::u16string text;
};

// A value by its own kind: the value of a marker, mask or text stream lies in the object that is
// not null.
struct StreamValue {
    AEGP_StreamVal2 value{};
    std::shared_ptr<Marker> marker{};
    std::shared_ptr<Outline> outline{};
    std::shared_ptr<TextDocument> document{};

    const void* object() const { // null for numbers
        return marker != nullptr    ? static_cast<const void*>(marker.get())
               : outline != nullptr ? static_cast<const void*>(outline.get())
                                    : document.get();
    }
};

struct Keyframe {
    double seconds = 0; // of the layer
    StreamValue value;
    AEGP_KeyframeInterpolationType in = AEGP_KeyInterp_LINEAR;
    AEGP_KeyframeInterpolationType out = AEGP_KeyInterp_LINEAR;
    AEGP_KeyframeFlags flags = 0;
};

// Numbers in a value of the type, 1 to 4; 0: it is not made of numbers.
std::size_t componentCount(AEGP_StreamType type);

// Whether both mean the same to a stream of the type.
bool areSame(const StreamValue& one, const StreamValue& other, AEGP_StreamType type);

// Units of a second in which the host tells times: all common frame rates have whole frames in it.
inline constexpr A_u_long timeUnits = 120000;
// Two times that differ by less are one, seconds.
inline constexpr double timeTolerance = 0.5 / timeUnits;

class Stream {
public:
    Stream(std::u16string streamName, std::string streamMatchName, AEGP_StreamType streamType);

    // A leaf's value at a time of the layer: between two keyframes by their interpolation (a hold
    // keeps the earlier one), outside the first and the last theirs, without keyframes `constant`.
    StreamValue at(double seconds) const;

    // The same behind the stream's expression, if one is switched on. That is a script which finds
    // the time and the value before it as `time` and `value`, and gives a number, or a list of as
    // many as the value has. One that fails gives the value before it.
    StreamValue withExpression(double seconds) const;

    // Gives the stream this value for all times if it has no keyframes, else sets or makes the
    // keyframe at that time. A popup's value is held within its choices, all else is kept as it
    // comes.
    void set(const StreamValue& newValue, double seconds);

    // Makes the keyframe if there is none at that time; its index in the order of times.
    std::size_t addKeyframe(double seconds);

    // Gives one keyframe that value, held as `set` holds it.
    void setKeyframe(std::size_t index, const StreamValue& newValue);

    // The value of the last keyframe to go stays as the constant.
    void removeKeyframe(std::size_t index);

    bool isGroup() const { return !children.empty(); }
    bool isHidden() const { return (flags & AEGP_DynStreamFlag_HIDDEN) != 0; }

    LiveObject<Stream> live{this};
    std::u16string name;
    std::string matchName;
    AEGP_StreamType type; // NO_DATA for a group
    AEGP_DynStreamFlag flags = 0;
    StreamValue constant;
    int choices = 0;                 // of a popup; 0: it is none
    std::vector<Keyframe> keyframes; // in the order of their times
    std::u16string expression;
    bool isExpressionEnabled = false;
    bool isModified = false;
    Stream* parent = nullptr; // the group that it stands in
    Layer* layer = nullptr;   // whose time it counts in
    std::vector<std::unique_ptr<Stream>> children;

private:
    StreamValue held(const StreamValue& wanted) const;
    std::string expressionScript(const StreamValue& before, double seconds) const;
    bool holds(const Keyframe& before, const Keyframe& after) const;
};

} // namespace hostkit
