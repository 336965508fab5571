#include "engine/graph/graph_cycles.h"

#include <unordered_map>

#include "engine/nodes/node_base.h"

namespace {

enum class Visit { Unseen, Open, Closed };

// Reaching an open node means a cycle; a closed one need not be visited again.
bool meetsOpenNode(const NodeBase& node, std::unordered_map<const NodeBase*, Visit>& visits) {
    Visit& visit = visits[&node];
    if (visit != Visit::Unseen)
        return visit == Visit::Open;
    visit = Visit::Open;
    for (const Connection& connection : node.connections)
        if (connection.source != nullptr && meetsOpenNode(*connection.source, visits))
            return true;
    visits[&node] = Visit::Closed;
    return false;
}

} // namespace

bool hasCycle(const NodeBase& output) {
    std::unordered_map<const NodeBase*, Visit> visits;
    return meetsOpenNode(output, visits);
}
