#include "engine/graph/pb_graph.h"

#include <algorithm>
#include <unordered_map>

#include "engine/nodes/image_node.h"
#include "engine/program/glsl_generator.h"
#include "gpu/errors.h"
#include "support/outcome_texts.h"
#include "support/report.h"

namespace {

bool hasTooManyInputs(const pbKernelInfo& kernel) {
    return kernel.inputs.size() > maxKernelInputs;
}

bool hasTooManyInputs(const pbGraphInfo& graph) {
    return std::any_of(graph.nodes.begin(), graph.nodes.end(), [&](const pbgNodeInfo& node) {
        const pbKernelInfo* kernel = kernelOfNode(graph, node);
        return kernel != nullptr && hasTooManyInputs(*kernel);
    });
}

// The input with that name; null if the kernel has none.
Connection* findInput(NodeBase& node, std::string_view name) {
    // Names in a graph file are cut to a name field, names in a kernel may be longer.
    for (Connection& connection : node.connections)
        if (std::string_view(connection.name.data()).substr(0, pbName().size() - 1) == name)
            return &connection;
    return nullptr;
}

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

// True if any node that `output` depends on depends on itself: such a graph cannot be rendered
// depth first. Visits each node once.
bool hasCycle(const NodeBase& output) {
    std::unordered_map<const NodeBase*, Visit> visits;
    return meetsOpenNode(output, visits);
}

// Called for each node that the output needs.
void countReaders(NodeBase& node) {
    for (const Connection& connection : node.connections)
        if (connection.source != nullptr && ++connection.source->readerCount == 1)
            countReaders(*connection.source);
}

bool hasStorage(const RenderTexture& texture, const FrameDescription& frame,
                std::uint32_t componentBytes) {
    return texture.width == frame.width && texture.height == frame.height &&
           texture.componentBytes == componentBytes;
}

} // namespace

pbGraph::pbGraph(const pbKernelInfo& kernelInfo, std::uint32_t swizzleIndex)
    : name(nameText(kernelInfo.name)), swizzle(swizzleIndex) {
    for (const pbParameter& parameter : kernelInfo.parameters)
        parameters.push_back(makeObject<GraphParameter>(parameter));
    if (hasTooManyInputs(kernelInfo))
        refuse("Too many inputs.\n");
    else
        buildKernel(kernelInfo);
    buildInfoText(kernelInfo, "Pixel Bender Kernel : ");
}

pbGraph::pbGraph(const pbGraphInfo& graphInfo, std::uint32_t swizzleIndex)
    : name(nameText(graphInfo.name)), swizzle(swizzleIndex) {
    for (const pbParameter& parameter : graphInfo.parameters)
        addGraphParameter(parameter);
    if (hasTooManyInputs(graphInfo))
        refuse("Too many inputs.\n");
    else
        buildGraph(graphInfo);
    buildInfoText(graphInfo, "Pixel Bender Graph : ");
}

// Nodes are destroyed before the parameters that they refer to.
pbGraph::~pbGraph() {
    nodes.clear();
    parameters.clear();
}

void pbGraph::report(const char* reason) const {
    const NarrowString message = concatenate(concatenate(NarrowString(reason), name.c_str()), "\n");
    reportMessage(message.c_str(), ChannelInfo);
}

void pbGraph::refuse(const char* reason) {
    failed = true;
    report(reason);
}

void pbGraph::buildKernel(const pbKernelInfo& kernelInfo) {
    nodes.push_back(makeObject<Node>(*this, kernelInfo));
    outputNode = 0;
    for (std::size_t i = 0; i < kernelInfo.inputs.size(); ++i) {
        nodes.push_back(makeObject<ImageNode>(*this, nameText(kernelInfo.inputs[i].name)));
        nodes[0]->connections[i].source = nodes.back().get();
    }
    prepareReuse();
}

// The user sees the parameter's plain name; in the programs it has the prefix.
void pbGraph::addGraphParameter(const pbParameter& source) {
    parameters.push_back(makeObject<GraphParameter>(source));
    pbParameter& parameter = parameters.back()->parameter;
    if (nameText(parameter.aeDisplayName).empty() && nameText(parameter.displayName).empty())
        parameter.displayName = parameter.name;
    parameter.setName(graphParameterName(source.wholeName));
}

void pbGraph::buildGraph(const pbGraphInfo& graphInfo) {
    for (const pbVariable& input : graphInfo.inputs)
        nodes.push_back(makeObject<ImageNode>(*this, nameText(input.name)));
    for (std::size_t i = 0; i < graphInfo.nodes.size(); ++i)
        nodes.push_back(makeObject<Node>(*this, graphInfo, i));
    for (const pbConnection& connection : graphInfo.connections)
        connect(connection);
    closeOpenInputs();
    if (outputNode == -1)
        report("No output node.\n");
    else if (output() != nullptr && hasCycle(*output()))
        refuse("Cyclick Dependency detected.\n");
    else
        prepareReuse();
}

// A connection that cannot be resolved is ignored.
void pbGraph::connect(const pbConnection& connection) {
    const std::int32_t from = indexOf(nameText(connection.from));
    if (connection.kind == ToOutputImage) {
        outputNode = from;
        return;
    }
    const std::int32_t to = indexOf(nameText(connection.to));
    const auto count = static_cast<std::int32_t>(nodes.size());
    if (from == count || to == count)
        return;
    Connection* input =
        findInput(*nodes[static_cast<std::size_t>(to)], nameText(connection.toInput));
    if (input != nullptr)
        input->source = nodes[static_cast<std::size_t>(from)].get();
}

// The first node of that name, the number of nodes if there is none. Images come first, so an image
// takes precedence over a kernel's node.
std::int32_t pbGraph::indexOf(std::string_view nodeName) const {
    const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const auto& node) {
        return nameText(node->name) == nodeName;
    });
    return static_cast<std::int32_t>(found - nodes.begin());
}

void pbGraph::closeOpenInputs() {
    const auto isOpen = [](const Connection& input) { return input.source == nullptr; };
    for (const auto& node : nodes)
        if (std::any_of(node->connections.begin(), node->connections.end(), isOpen)) {
            transparentTexture = makeTransparentTexture();
            return;
        }
}

// Reserves memory, so that a frame allocates none.
void pbGraph::prepareReuse() {
    spareTextures.reserve(nodes.size());
    if (output() != nullptr)
        countReaders(*output());
}

NodeBase* pbGraph::output() const {
    const auto index = static_cast<std::size_t>(outputNode);
    return outputNode >= 0 && index < nodes.size() ? nodes[index].get() : nullptr;
}

void pbGraph::render(const FrameDescription& frame) {
    takeError(); // errors from before are not this frame's
    std::erase_if(spareTextures, [&](RenderTexture* texture) {
        const bool isKept = hasStorage(*texture, frame, frame.componentBytes);
        if (!isKept)
            texture->shrink();
        return !isKept;
    });
    output()->render(frame);
}

void pbGraph::provideStorage(RenderTexture& target, const FrameDescription& frame,
                             std::uint32_t componentBytes, GLenum format) {
    auto spare = std::ranges::find(spareTextures, &target);
    if (spare == spareTextures.end())
        spare = std::ranges::find(spareTextures, componentBytes, &RenderTexture::componentBytes);
    if (spare != spareTextures.end()) {
        if (*spare != &target)
            std::swap(target, **spare);
        spareTextures.erase(spare);
    }
    if (!hasStorage(target, frame, componentBytes))
        target.setStorage(frame.width, frame.height, componentBytes, format);
}

void pbGraph::releaseStorage(RenderTexture& target) {
    if (!keepsTextures)
        target.shrink();
    else if (!target.isShrunk)
        spareTextures.push_back(&target);
}

void pbGraph::resetNodes() {
    spareTextures.clear();
    for (const auto& node : nodes)
        node->reset();
    reportFrameError(takeError());
}

void pbGraph::reportFrameError(unsigned int error) {
    const bool isNew = error != frameError;
    frameError = error;
    if (error == GL_NO_ERROR)
        return;
    NarrowString message(failureMark);
    message.append(name).append(" OpenGL error: ").append(errorText(error)).append("\n");
    reportMessage(message.c_str(), ChannelTrace);
    reportMessage(message.c_str(), ChannelInfo);
    if (isNew) // reported once for consecutive frames
        reportMessage(message.append("\n").c_str() + failureMark.size(), ChannelErrorLog);
}

std::int32_t pbGraph::imageNodeCount() const {
    return static_cast<std::int32_t>(std::count_if(
        nodes.begin(), nodes.end(), [](const auto& node) { return !node->isKernel(); }));
}

ImageNode* pbGraph::imageNodeAt(std::int32_t index) const {
    if (index < 0)
        return nullptr;
    for (const auto& node : nodes)
        if (!node->isKernel() && index-- == 0)
            return static_cast<ImageNode*>(node.get());
    return nullptr;
}

bool isRunnable(const pbGraph& graph) {
    return !graph.failed && graph.output() != nullptr;
}
