// The kinds of control: one row for each, with all that depends on the kind.
//
// A control's value is made of numbers in the order in which a person gives them: red, green, blue
// and alpha of a colour from 0 to 1, x and y of a point in pixels of the layer at full resolution,
// the degrees of an angle, a choice counted from 1. A layer control has none: its value is a layer.
// A definition counts as its control does, a stream as its suite says. To add a kind, add a row.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/effect/frames.h"
#include "hostkit/project/streams.h"
#include "sdk/pf_fixed.h"
#include "sdk/pf_params.h"

namespace hostkit {

struct NumberRange {
    double low;
    double high;
};

// How a kind counts: in whole numbers, as 0 or 1, in 16.16, or in any fraction.
enum class NumberFormat { Whole, Truth, Fixed, Fraction };

// Whether the kernel's default may be a value where the range does not hold it. A definition holds
// some defaults only roughly, so that any number may be one.
enum class DefaultFit { WithinRange, Exactly, Anything };

struct ControlKind {
    PF_ParamType type;
    const char* name; // for people and for files
    AEGP_StreamType streamType;
    NumberFormat format;
    std::size_t numbers = 1;                    // of a value; 0: it is a layer
    std::size_t fewestNumbers = numbers;        // that can be given for one
    std::array<std::uint8_t, 4> order = {0, 1}; // member k of a stream's value is that number
    DefaultFit defaultFit = DefaultFit::Anything;
    bool isRangeShown = false; // else it only limits what can be given
    bool hasChoices = false;   // whose texts may hold commas

    // The value with which the control starts, and its default; points are declared in percent of
    // the layer.
    AEGP_StreamVal2 (*start)(const PF_ParamDefUnion& definition, const Layer& layer);
    AEGP_StreamVal2 (*defaultValue)(const PF_ParamDefUnion& definition, const Layer& layer);
    // Writes a value into a definition; points at the resolution. A layer control gets the layer
    // and its size, without pixels.
    void (*write)(PF_ParamDefUnion& definition, const AEGP_StreamVal2& value, const Layer& layer,
                  const Resolution& resolution);
    // Takes over ranges, defaults and display of another definition; the value stays.
    void (*configure)(PF_ParamDefUnion& definition, const PF_ParamDefUnion& look);
    // What can be given; null, or nothing: no range.
    std::optional<NumberRange> (*range)(const PF_ParamDefUnion& definition) = nullptr;
    // A number out of a person's text. Throws std::invalid_argument with the reason.
    double (*parse)(const PF_ParamDefUnion& definition, const std::string& text) = nullptr;
    // The unit that is shown behind the number; null: none.
    const char* (*display)(const PF_ParamDefUnion& definition) = nullptr;
    // What is wrong with a definition that a module hands over; null: nothing.
    const char* (*fault)(const PF_ParamDefUnion& definition) = nullptr;
};

// The row of a definition that passed `faultOf`.
const ControlKind& kindOf(const PF_ParamDef& definition);

// A stream's value as numbers, as many as the kind has, and back.
std::vector<double> numbersOf(const ControlKind& kind, const AEGP_StreamVal2& value);
AEGP_StreamVal2 valueOf(const ControlKind& kind, const std::vector<double>& numbers);

bool isLayerControl(const PF_ParamDef& definition);

// The layer that a layer control has chosen; null: none.
Layer* chosenLayer(const StreamValue& value, const Layer& layer);

// What is wrong with a definition that a module hands over; empty: nothing.
std::string faultOf(const PF_ParamDef& definition);

// How many choices a popup has; 0: the control is none.
int choiceCount(const PF_ParamDef& definition);

// Whether the text of a popup names its choices; a kernel's own popups need not.
bool hasNamesForChoices(const PF_PopupDef& popup);

// The texts of a popup's choices; a choice without one goes by its number.
std::vector<std::string> choicesOf(const PF_PopupDef& popup);

// The size of a layer at full resolution: its source's, or without one the composition's.
const Item& frameItem(const Layer& layer);

// The whole text as a finite number, with '.' whatever the locale; nothing when it is none.
std::optional<double> parseNumber(std::string_view text);

} // namespace hostkit
