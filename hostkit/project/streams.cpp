#include "hostkit/project/streams.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

#include <nlohmann/json.hpp>

#include "hostkit/services/scripts.h"
#include "hostkit/services/text.h"

namespace hostkit {

namespace {

// The components of a value; the stream's type says how many are used.
using Numbers = std::array<double, 4>;
static_assert(sizeof(Numbers) == sizeof(AEGP_StreamVal2));

double fraction(const Keyframe& before, const Keyframe& after, double seconds) {
    return std::clamp((seconds - before.seconds) / (after.seconds - before.seconds), 0.0, 1.0);
}

StreamValue blend(const StreamValue& from, const StreamValue& to, std::size_t count, double part) {
    Numbers numbers = std::bit_cast<Numbers>(from.value);
    const Numbers goal = std::bit_cast<Numbers>(to.value);
    for (std::size_t i = 0; i < count; ++i)
        numbers[i] += (goal[i] - numbers[i]) * part;
    return {std::bit_cast<AEGP_StreamVal2>(numbers), nullptr};
}

// Parses numbers separated by commas, such as "1,2.5". Returns their count; 0 if the text is
// anything else or has too many.
std::size_t readNumbers(const std::string& text, Numbers& numbers) {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t count = 0; count < numbers.size();) {
        const auto [rest, error] = std::from_chars(at, end, numbers[count++]);
        if (error != std::errc() || (rest != end && *rest != ','))
            return 0;
        if (rest == end)
            return count;
        at = rest + 1;
    }
    return 0;
}

// The first keyframe at or after that time.
template<class Keyframes>
auto firstFrom(Keyframes& keyframes, double seconds) {
    return std::lower_bound(
        keyframes.begin(), keyframes.end(), seconds,
        [](const Keyframe& key, double time) { return key.seconds < time - timeTolerance; });
}

} // namespace

std::size_t componentCount(AEGP_StreamType type) {
    switch (type) {
    case AEGP_StreamType_OneD:
        return 1;
    case AEGP_StreamType_TwoD:
        return 2;
    case AEGP_StreamType_ThreeD:
        return 3;
    case AEGP_StreamType_COLOR:
        return 4;
    default:
        return 0;
    }
}

bool areSame(const StreamValue& one, const StreamValue& other, AEGP_StreamType type) {
    if (one.object() != nullptr || other.object() != nullptr)
        return one.object() == other.object();
    if (type == AEGP_StreamType_LAYER_ID)
        return one.value.layer_id == other.value.layer_id;
    const Numbers a = std::bit_cast<Numbers>(one.value);
    const Numbers b = std::bit_cast<Numbers>(other.value);
    return std::equal(a.begin(), a.begin() + componentCount(type), b.begin());
}

Stream::Stream(std::u16string streamName, std::string streamMatchName, AEGP_StreamType streamType)
    : name(std::move(streamName)), matchName(std::move(streamMatchName)), type(streamType) {}

StreamValue Stream::at(double seconds) const {
    if (keyframes.empty())
        return constant;
    const auto next = firstFrom(keyframes, seconds);
    if (next == keyframes.end())
        return keyframes.back().value;
    if (next == keyframes.begin() || next->seconds <= seconds + timeTolerance)
        return next->value;
    const Keyframe& before = *std::prev(next);
    if (isHold(before, *next))
        return before.value;
    return blend(before.value, next->value, componentCount(type), fraction(before, *next, seconds));
}

StreamValue Stream::withExpression(double seconds) const {
    const StreamValue before = at(seconds);
    const std::size_t count = componentCount(type);
    if (!isExpressionEnabled || expression.empty() || count == 0)
        return before;
    const ScriptResult result = ScriptRunner().run(expressionScript(before, seconds));
    Numbers numbers{};
    if (!result.value || readNumbers(*result.value, numbers) != count)
        return before;
    return clamped({std::bit_cast<AEGP_StreamVal2>(numbers), nullptr});
}

std::string Stream::expressionScript(const StreamValue& before, double seconds) const {
    const Numbers numbers = std::bit_cast<Numbers>(before.value);
    const auto end = numbers.begin() + static_cast<std::ptrdiff_t>(componentCount(type));
    const nlohmann::json value = type == AEGP_StreamType_OneD
                                     ? nlohmann::json(numbers[0])
                                     : nlohmann::json(std::vector<double>(numbers.begin(), end));
    return "var time = " + nlohmann::json(seconds).dump() + ", value = " + value.dump() + ";\n" +
           toUtf8(expression);
}

void Stream::set(const StreamValue& newValue, double seconds) {
    if (keyframes.empty())
        constant = clamped(newValue);
    else
        setKeyframe(addKeyframe(seconds), newValue);
    isModified = true;
}

std::size_t Stream::addKeyframe(double seconds) {
    const auto next = firstFrom(keyframes, seconds);
    const auto index = static_cast<std::size_t>(std::distance(keyframes.begin(), next));
    if (next != keyframes.end() && next->seconds <= seconds + timeTolerance)
        return index;
    Keyframe made;
    made.seconds = seconds;
    if (type == AEGP_StreamType_MARKER)
        made.value.marker = std::make_shared<Marker>();
    else
        made.value = at(seconds);
    keyframes.insert(next, made);
    isModified = true;
    return index;
}

void Stream::setKeyframe(std::size_t index, const StreamValue& newValue) {
    keyframes.at(index).value = clamped(newValue);
    isModified = true;
}

void Stream::removeKeyframe(std::size_t index) {
    if (keyframes.size() == 1)
        constant = keyframes.front().value;
    keyframes.erase(keyframes.begin() + static_cast<std::ptrdiff_t>(index));
    isModified = true;
}

StreamValue Stream::clamped(const StreamValue& wanted) const {
    StreamValue value = wanted;
    if (choices > 0) // fmin and fmax ignore NaN
        value.value.one_d = std::fmin(std::fmax(value.value.one_d, 1.0), choices);
    return value;
}

// Choices and objects are never interpolated.
bool Stream::isHold(const Keyframe& before, const Keyframe& after) const {
    return before.out == AEGP_KeyInterp_HOLD || after.in == AEGP_KeyInterp_HOLD || choices > 0 ||
           componentCount(type) == 0;
}

} // namespace hostkit
