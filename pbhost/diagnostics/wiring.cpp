#include "pbhost/diagnostics/wiring.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

#include "engine/program/glsl_generator.h"
#include "pbhost/diagnostics/diagnostic.h"

namespace pbhost {

namespace {

using Names = std::vector<std::string_view>;

constexpr std::size_t mostNames = 6; // in a message
constexpr std::size_t mostMessages = 20;

Names namesOf(const auto& named) {
    Names names;
    for (const auto& each : named)
        names.push_back(nameText(each.name));
    return names;
}

// The nodes and the sources of their inputs, resolved by the engine's rules.
class Wiring {
public:
    explicit Wiring(const pbGraphInfo& graph) : graph_(graph) {
        for (const pbVariable& image : graph.inputs)
            byName_.emplace(nameText(image.name), std::nullopt);
        for (const pbgNodeInfo& node : graph.nodes)
            addNode(node);
        const pbConnection* output = nullptr; // the last one wins, as in the engine
        for (const pbConnection& connection : graph.connections)
            if (connection.kind == ToOutputImage)
                output = &connection;
            else
                connect(connection);
        addUnfedInputs();
        if (output != nullptr)
            addOutput(*output);
        addCycles(found.warnings);
    }

    WiringFaults found;

private:
    enum class Feed { Nothing, Broken, Image, Node };

    struct Input {
        Feed feed = Feed::Nothing;
        std::size_t node = 0; // with Feed::Node
    };

    struct Node {
        enum State { New, Open, Closed };

        std::string_view id;
        const pbKernelInfo* kernel;
        std::vector<Input> inputs; // in the kernel's order; empty without a kernel
        State state = New;         // of the cycle search
    };

    // Text is built only for messages that are shown, because a file may cause any number of them.
    static void addMessage(std::vector<WiringFault>& list, const char* rule, GraphPart part,
                           std::size_t index, const auto& makeText) {
        if (list.size() < mostMessages)
            list.push_back({part, index, rule, makeText()});
        else if (list.size() == mostMessages)
            list.push_back({GraphPart::Graph, 0, rule, "and others"});
    }

    std::size_t indexOf(const pbConnection& connection) const {
        return static_cast<std::size_t>(&connection - graph_.connections.data());
    }

    void addNode(const pbgNodeInfo& node) {
        const std::string_view id = nameText(node.id), name = nameText(node.name);
        const pbKernelInfo* kernel = kernelOfNode(graph_, node);
        byName_.emplace(id, nodes_.size());
        nodes_.push_back({id, kernel, {}});
        if (kernel != nullptr) {
            nodes_.back().inputs.resize(kernel->inputs.size());
            return;
        }
        addMessage(found.errors, "graph-kernel", GraphPart::Node, nodes_.size() - 1, [&] {
            return "node " + inQuotes(id) + ": the graph has no kernel " + inQuotes(name) + "; " +
                   namesLike(name, namesOf(graph_.kernels));
        });
    }

    void connect(const pbConnection& connection) {
        const std::string_view id = nameText(connection.to), input = nameText(connection.toInput);
        if (id.empty())
            return; // the attribute is missing, which others report
        const auto warn = [&](const auto& makeReason) {
            const std::size_t index = indexOf(connection);
            addMessage(found.warnings, "graph-connection", GraphPart::Connection, index, [&] {
                return "the connection from " + inQuotes(nameText(connection.from)) + " to input " +
                       inQuotes(input) + " of node " + inQuotes(id) +
                       " is ignored: " + makeReason();
            });
        };
        const auto target = byName_.find(id);
        if (target == byName_.end() || !target->second)
            return warn([&] {
                return (target == byName_.end() ? "there is no such node; "
                                                : "that is an input image; ") +
                       namesLike(id, nodeIds());
            });
        Node& node = nodes_[*target->second];
        if (node.kernel == nullptr)
            return; // reported for the node
        const Names inputs = namesOf(node.kernel->inputs);
        const auto place = std::find(inputs.begin(), inputs.end(), input);
        if (place == inputs.end())
            return warn([&] {
                return "kernel " + inQuotes(nameText(node.kernel->name)) + " has no such input; " +
                       namesLike(input, inputs);
            });
        Input& fed = node.inputs[static_cast<std::size_t>(place - inputs.begin())];
        const auto source = byName_.find(nameText(connection.from));
        if (source != byName_.end()) {
            fed = {source->second ? Feed::Node : Feed::Image, source->second.value_or(0)};
            return;
        }
        warn([&] {
            return "its source is neither a node nor an input image; " +
                   sourcesLike(connection.from);
        });
        if (fed.feed == Feed::Nothing)
            fed.feed = Feed::Broken;
    }

    void addUnfedInputs() {
        for (std::size_t index = 0; index < nodes_.size(); ++index) {
            const Node& node = nodes_[index];
            for (std::size_t i = 0; i < node.inputs.size(); ++i)
                if (node.inputs[i].feed == Feed::Nothing)
                    addUnfedInput(index, node.kernel->inputs[i].name);
        }
    }

    void addUnfedInput(std::size_t index, const pbName& input) {
        const Node& node = nodes_[index];
        addMessage(found.warnings, "graph-input", GraphPart::Node, index, [&] {
            return "input " + inQuotes(nameText(input)) + " of node " + inQuotes(node.id) +
                   " (kernel " + inQuotes(nameText(node.kernel->name)) +
                   ") is not connected and reads as transparent; to connect it " +
                   sourcesLike(input, node.id);
        });
    }

    void addOutput(const pbConnection& connection) {
        const auto source = byName_.find(nameText(connection.from));
        if (source == byName_.end())
            addMessage(found.errors, "graph-connection", GraphPart::Connection, indexOf(connection),
                       [&] {
                           return "the output image is connected to " +
                                  inQuotes(nameText(connection.from)) +
                                  ", which is neither a node nor an input image; " +
                                  sourcesLike(connection.from);
                       });
        else if (source->second)
            searchFrom(*source->second, found.errors);
    }

    Names nodeIds() const {
        Names ids;
        for (const Node& node : nodes_)
            ids.push_back(node.id);
        return ids;
    }

    // The possible sources of an input of node `ownId`, or of the output.
    std::string sourcesLike(const pbName& wanted, std::string_view ownId = {}) const {
        Names names = namesOf(graph_.inputs);
        for (const Node& node : nodes_)
            if (ownId.empty() || node.id != ownId)
                names.push_back(node.id);
        return namesLike(nameText(wanted), std::move(names));
    }

    // Searches the nodes that do not reach the output.
    void addCycles(std::vector<WiringFault>& messages) {
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            if (nodes_[i].state == Node::New)
                searchFrom(i, messages);
    }

    // Depth-first search from a node to its sources; reaching an open node closes a cycle. Not
    // recursive, because a file may contain a chain of any length.
    void searchFrom(std::size_t start, std::vector<WiringFault>& messages) {
        std::vector<std::pair<std::size_t, std::size_t>> path = {{start, 0}}; // node, next input
        nodes_[start].state = Node::Open;
        while (!path.empty()) {
            Node& node = nodes_[path.back().first];
            if (path.back().second == node.inputs.size()) {
                node.state = Node::Closed;
                path.pop_back();
                continue;
            }
            const Input& input = node.inputs[path.back().second++];
            if (input.feed != Feed::Node)
                continue;
            Node& source = nodes_[input.node];
            if (source.state == Node::Open)
                addMessage(messages, "graph-cycle", GraphPart::Node, input.node,
                           [&] { return cycleText(path, input.node); });
            if (source.state != Node::New)
                continue;
            source.state = Node::Open;
            path.emplace_back(input.node, 0);
        }
    }

    // The cycle in the direction of data flow, which is the reverse of the path.
    std::string cycleText(const std::vector<std::pair<std::size_t, std::size_t>>& path,
                          std::size_t first) const {
        std::string text = "these nodes form a cycle: " + inQuotes(nodes_[first].id);
        for (auto step = path.rbegin(); step->first != first; ++step)
            text += " -> " + inQuotes(nodes_[step->first].id);
        return text + " -> " + inQuotes(nodes_[first].id);
    }

    const pbGraphInfo& graph_;
    std::vector<Node> nodes_; // in the graph's order
    // Names that a connection can refer to: the index of a node, or nothing for an image. The first
    // of several equal names wins, and images precede nodes.
    std::unordered_map<std::string_view, std::optional<std::size_t>> byName_;
};

} // namespace

std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t exchanged = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string namesLike(std::string_view wanted, std::vector<std::string_view> known) {
    if (known.empty())
        return "there are none";
    std::vector<std::pair<std::size_t, std::string_view>> byDistance;
    for (const std::string_view name : known)
        byDistance.emplace_back(editDistance(wanted, name), name);
    std::stable_sort(byDistance.begin(), byDistance.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    std::string text = known.size() == 1 ? "there is " : "there are ";
    for (std::size_t i = 0; i < std::min(known.size(), mostNames); ++i)
        text += (i == 0 ? "" : ", ") + inQuotes(byDistance[i].second);
    return text + (known.size() > mostNames ? " and others" : "");
}

WiringFaults checkWiring(const pbGraphInfo& graph) {
    return Wiring(graph).found;
}

} // namespace pbhost
