// Finds the cycles that would keep a graph from being rendered depth first.
#pragma once

class NodeBase;

// True if any node that `output` depends on depends on itself. Visits each node once.
bool hasCycle(const NodeBase& output);
