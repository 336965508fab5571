// A stream: one animated value of a layer or an effect, or a named group of streams.
//
// A stream owns its children and its keyframes.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "hostkit/calls/live_object.h"
#include "sdk/aegp_types.h"

namespace hostkit {

struct Layer;

// The texts of a marker, UTF-16.
struct Marker {
    std::u16string comment;
};

struct Outline { // path of a mask
    bool isOpen = false;
    std::vector<AEGP_MaskVertex> vertices;
};

struct TextDocument {
    std::u16string text;
};

// A stream's value. The value of a marker, mask or text stream is in the pointer that is not null;
// any other value is in `value`.
struct StreamValue {
    AEGP_StreamVal2 value{};
    std::shared_ptr<Marker> marker{};
    std::shared_ptr<Outline> outline{};
    std::shared_ptr<TextDocument> document{};

    const void* object() const { // the marker, outline or document; null for numbers
        return marker != nullptr    ? static_cast<const void*>(marker.get())
               : outline != nullptr ? static_cast<const void*>(outline.get())
                                    : document.get();
    }
};

struct Keyframe {
    double seconds = 0; // of the layer's time
    StreamValue value;
    AEGP_KeyframeInterpolationType in = AEGP_KeyInterp_LINEAR;
    AEGP_KeyframeInterpolationType out = AEGP_KeyInterp_LINEAR;
    AEGP_KeyframeFlags flags = 0;
};

// Number of components of a value of the type, 1 to 4; 0 if the type is not numeric.
std::size_t componentCount(AEGP_StreamType type);

// Whether the values are equal for a stream of the type.
bool areSame(const StreamValue& one, const StreamValue& other, AEGP_StreamType type);

// Time scale of times that the host returns. The frame durations of all common frame rates are
// whole numbers of these units.
inline constexpr A_u_long timeUnits = 120000;
// Keyframes that are closer together than this, in seconds, have the same time.
inline constexpr double timeTolerance = 0.5 / timeUnits;

class Stream {
public:
    Stream(std::u16string streamName, std::string streamMatchName, AEGP_StreamType streamType);

    // Value at a time of the layer without the expression. Between two keyframes it is interpolated
    // (a hold keyframe keeps its value), before the first and after the last it is constant.
    // Without keyframes it is `constant`.
    StreamValue at(double seconds) const;

    // Value with the stream's expression applied, if one is enabled. The expression is a script
    // with the variables `time` (seconds) and `value`; its result is a number, or a list with one
    // number for each component. If the script fails, the result is the value without it.
    StreamValue withExpression(double seconds) const;

    // Sets the value: `constant` if there are no keyframes, otherwise the keyframe at that time,
    // which is added if needed. The value of a popup is clamped to its choices; other values are
    // stored as given.
    void set(const StreamValue& newValue, double seconds);

    // Adds a keyframe if there is none at that time. Returns its index in order of time.
    std::size_t addKeyframe(double seconds);

    // Sets the value of one keyframe; clamped as by `set`.
    void setKeyframe(std::size_t index, const StreamValue& newValue);

    // Removing the last keyframe stores its value as the constant.
    void removeKeyframe(std::size_t index);

    bool isGroup() const { return !children.empty(); }
    bool isHidden() const { return (flags & AEGP_DynStreamFlag_HIDDEN) != 0; }

    LiveObject<Stream> live{this};
    std::u16string name;
    std::string matchName;
    AEGP_StreamType type; // NO_DATA: a group
    AEGP_DynStreamFlag flags = 0;
    StreamValue constant;
    int choices = 0;                 // number of choices of a popup; 0: not a popup
    std::vector<Keyframe> keyframes; // in order of time
    std::u16string expression;
    bool isExpressionEnabled = false;
    bool isModified = false;
    Stream* parent = nullptr; // the group that contains it
    Layer* layer = nullptr;   // defines the stream's time
    std::vector<std::unique_ptr<Stream>> children;

private:
    StreamValue clamped(const StreamValue& wanted) const;
    std::string expressionScript(const StreamValue& before, double seconds) const;
    bool isHold(const Keyframe& before, const Keyframe& after) const;
};

} // namespace hostkit
