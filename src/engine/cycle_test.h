// Whether a graph can be run depth first from a node.
#pragma once

class NodeBase;

// True if any node that `output` depends on depends on itself. Looks at each node once.
bool hasCycle(const NodeBase& output);
