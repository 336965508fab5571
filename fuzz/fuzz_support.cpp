#include "fuzz/fuzz_support.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "hostkit/calls/ledger.h"
#include "hostkit/services/memory.h"

namespace fuzz {

namespace {

hostkit::Layer& addLayer(hostkit::Host& host) {
    hostkit::Composition& composition = host.project.addComposition("fuzz", 4, 4);
    return composition.addLayer("layer", hostkit::makeFootage("", hostkit::makeWorld(4, 4, 1, 0)));
}

} // namespace

void fail(const std::string& why) {
    std::fprintf(stderr, "finding: %s\n", why.c_str());
    std::abort();
}

hostkit::Host& bareHost() {
    static hostkit::Host& host = *new hostkit::Host;
    return host;
}

void requireNothingLeft(std::size_t expectedHandles) {
    for (const std::string& fault : hostkit::ledger::takeFaults())
        fail("the host found a misuse: " + fault);
    if (hostkit::memory::liveHandles() != expectedHandles)
        fail("handles are left: " + std::to_string(hostkit::memory::liveHandles()) + ", not " +
             std::to_string(expectedHandles));
}

Instance::Instance()
    : plugin(TVM_MODULE_PATH), layer(addLayer(host)), effect(hostkit::addEffect(plugin, layer)) {
    require(plugin.setUp() == 0, "global setup failed");
    require(effect.setUpParameters() == 0, "parameter setup failed");
}

void Instance::open(std::string_view flatBlock) {
    const auto* const bytes = reinterpret_cast<const std::byte*>(flatBlock.data());
    effect.sequenceData =
        hostkit::memory::store(std::vector<std::byte>(bytes, bytes + flatBlock.size()));
    require(effect.resetUpSequence() == 0, "sequence resetup failed");
    require(effect.sequenceData != nullptr, "sequence resetup left no data");
}

std::string Instance::close() {
    require(effect.flattenSequence() == 0, "flattening failed");
    const std::vector<std::byte> block = hostkit::memory::contents(effect.sequenceData);
    require(effect.setDownSequence() == 0 && effect.sequenceData == nullptr, "setdown failed");
    if (handles_ == 0)
        handles_ = hostkit::memory::liveHandles();
    requireNothingLeft(handles_);
    return {reinterpret_cast<const char*>(block.data()), block.size()};
}

std::string pathOfBlock(std::string_view block) {
    using namespace std::string_view_literals;
    const std::size_t start = block.starts_with("\1\0\0\0"sv)   ? 8
                              : block.starts_with("\0\0\0\0"sv) ? 4
                                                                : block.size();
    if (start >= block.size())
        return "";
    const std::string_view path = block.substr(start);
    return std::string(path.substr(0, path.find('\0')));
}

} // namespace fuzz
