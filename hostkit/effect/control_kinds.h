// The table of control kinds: one row for each, with everything that depends on the kind. To add a
// kind, add a row.
//
// A control's value is a list of numbers in the user's order: red, green, blue and alpha of a
// colour from 0 to 1, x and y of a point in pixels of the layer at full resolution, degrees of an
// angle, a choice counted from 1. The value of a layer control is a layer instead. Definitions use
// the contract's units (PF_ParamDef), streams use those of the stream suite.
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

// Which numbers a kind can store: integers, 0 and 1, 16.16 fixed point, or any.
enum class NumberFormat { Whole, Truth, Fixed, Fraction };

// Which values the kernel's default can have: within the control's range, exactly the control's
// default even outside the range, or anything, because the definition stores the default inexactly.
enum class DefaultFit { WithinRange, Exactly, Anything };

struct ControlKind {
    PF_ParamType type;
    const char* name; // for users and files
    AEGP_StreamType streamType;
    NumberFormat format;
    std::size_t numbers = 1;                    // numbers in a value; 0: the value is a layer
    std::size_t fewestNumbers = numbers;        // the smallest number of them that may be given
    std::array<std::uint8_t, 4> order = {0, 1}; // member k of the stream's value is number order[k]
    DefaultFit defaultFit = DefaultFit::Anything;
    bool isRangeShown = false; // whether listings show the range, which always limits input
    bool hasChoices = false;   // a popup, whose choices may contain commas

    // The initial value and the default. Definitions store points in percent of the layer.
    AEGP_StreamVal2 (*start)(const PF_ParamDefUnion& definition, const Layer& layer);
    AEGP_StreamVal2 (*defaultValue)(const PF_ParamDefUnion& definition, const Layer& layer);
    // Writes the value into a definition; points are scaled to the resolution. A layer control gets
    // the layer and its size, without pixels.
    void (*write)(PF_ParamDefUnion& definition, const AEGP_StreamVal2& value, const Layer& layer,
                  const Resolution& resolution);
    // Copies range, default and display of another definition; the value stays.
    void (*configure)(PF_ParamDefUnion& definition, const PF_ParamDefUnion& look);
    // The allowed range of input; null, or no result: no range.
    std::optional<NumberRange> (*range)(const PF_ParamDefUnion& definition) = nullptr;
    // Parses one number of user input. Throws std::invalid_argument with the reason.
    double (*parse)(const PF_ParamDefUnion& definition, const std::string& text) = nullptr;
    // The unit to show after the number; null: none.
    const char* (*display)(const PF_ParamDefUnion& definition) = nullptr;
    // What is wrong with a definition that a module supplied; null: nothing.
    const char* (*fault)(const PF_ParamDefUnion& definition) = nullptr;
};

// The row for a definition that passed `faultOf`.
const ControlKind& kindOf(const PF_ParamDef& definition);

// Conversion between a stream's value and the list of numbers, which has kind.numbers elements.
std::vector<double> numbersOf(const ControlKind& kind, const AEGP_StreamVal2& value);
AEGP_StreamVal2 valueOf(const ControlKind& kind, const std::vector<double>& numbers);

bool isLayerControl(const PF_ParamDef& definition);

// The layer chosen in a layer control; null: none.
Layer* chosenLayer(const StreamValue& value, const Layer& layer);

// What is wrong with a definition that a module supplied; empty: nothing.
std::string faultOf(const PF_ParamDef& definition);

// Number of choices of a popup; 0: not a popup.
int choiceCount(const PF_ParamDef& definition);

// Whether the popup has a name for each choice (one may be missing).
bool hasNamesForChoices(const PF_PopupDef& popup);

// The texts of a popup's choices; a choice without a text gets its number.
std::vector<std::string> choicesOf(const PF_PopupDef& popup);

// The same without a last choice that has no text although all others have one: the effect counts
// one choice more than there are names.
std::vector<std::string> namedChoicesOf(const PF_PopupDef& popup);

// The item that defines the layer's size at full resolution: its source, or else the composition.
const Item& frameItem(const Layer& layer);

// Parses the whole text as a finite number with '.' as the decimal point in every locale.
std::optional<double> parseNumber(std::string_view text);

} // namespace hostkit
