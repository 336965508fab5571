// Finds the cycles that would keep a graph from being rendered depth first.
#pragma once

class NodeBase;

// True if any node that `output` depends on depends on itself. Looks at each node once.
bool hasCycle(const NodeBase& output);
