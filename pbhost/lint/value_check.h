// Checks of a parameter's values, for both grammars.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "pixelbender/model.h"

namespace pbhost {

// A fault of a parameter, with the metadata key whose value it is about.
struct ParameterFault {
    const char* rule;
    std::string_view key; // empty: the parameter as a whole
    std::string message;
};

// A range without a value, a default outside of it, a hint or type of control that does not fit the
// parameter's type.
std::vector<ParameterFault> faultsOf(const pbParameter& parameter);

// The parameters, by their index, for which no controls are left. They keep their defaults.
std::vector<std::size_t> parametersWithoutControl(const HostVector<pbParameter>& parameters);

// The kind of control of which there are too few, with their number: "10 sliders for integers".
std::string controlsFor(const pbParameter& parameter);

// The key of a parameter's or a program's metadata that is most similar to an unknown one, as the
// end of a message; empty for a key that is known, or has no effect and is in common use.
std::string unknownParameterKey(std::string_view key);
std::string unknownProgramKey(std::string_view key);

} // namespace pbhost
