// Whether the nodes of a graph are connected in a way that gives the picture that its author meant.
//
// The engine passes over whatever it cannot resolve, and draws; here each such thing becomes a
// sentence that names the node, the input and the names that would have fitted. Needs a running
// command, as the model does.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "pixelbender/model.h"

namespace pbhost {

struct WiringFaults {
    // Whatever is drawn is wrong: a node without a kernel, an output that comes from nowhere, a
    // cycle that the output depends on.
    std::vector<std::string> errors;
    // Passed over when the graph runs: a connection that leads nowhere, an input that nothing feeds
    // (it reads as transparent), a cycle that the output does not depend on.
    std::vector<std::string> warnings;
};

WiringFaults checkWiring(const pbGraphInfo& graph);

// The known names in quotes, those most like the wanted one first, and of many only these: `there
// are "blur", "tint"`.
std::string namesLike(std::string_view wanted, std::vector<std::string_view> known);

} // namespace pbhost
