#include "hostkit/host.h"

#include <stdexcept>

#include "hostkit/calls/calls.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/calls/memory_handles.h"
#include "hostkit/calls/references.h"
#include "hostkit/services/memory.h"
#include "hostkit/suites/basic_suite.h"
#include "hostkit/suites/tables.h"

namespace hostkit {

namespace {

Host* theHost = nullptr;

template<class... Suites>
void offerAll(const Suites&... tables) {
    (suites::offer(Suites::name, Suites::version, &tables), ...);
}

void offerSuites() {
    using namespace tables;
    offerAll(memorySuite(), persistentDataSuite(), utilitySuite(), interfaceSuite(), effectSuite(),
             streamSuite(), keyframeSuite(), dynamicStreamSuite(), markerSuite(), layerSuite(),
             cameraSuite(), lightSuite(), layerMaskSuite(), maskOutlineSuite(), textDocumentSuite(),
             itemSuite(), compSuite(), paramUtilsSuite(), worldSuite(), advAppSuite(),
             effectUiSuite());
}

} // namespace

Host::Host(const std::filesystem::path& preferencesFile) : preferences(preferencesFile) {
    if (theHost != nullptr)
        throw std::logic_error("there is a host in this process already");
    theHost = this;
    calls::reset();
    memory::reset();
    suites::reset();
    ledger::reset();
    resetMemoryHandles();
    references::reset();
    offerSuites();
    inData_.inter = tables::interactCallbacks();
    inData_.utils = &memory::callbacks();
    inData_.pica_basicP = &suites::basicSuite();
}

Host::~Host() {
    // Destroying the effects sends setdown to the module, which calls this host.
    project.compositions.clear();
    theHost = nullptr;
}

bool Host::isRegistered(AEGP_PluginID plugin) const {
    return plugin > 0 && static_cast<std::size_t>(plugin) <= registeredPlugins.size();
}

Host& Host::current() {
    if (theHost == nullptr)
        throw std::logic_error("there is no host");
    return *theHost;
}

} // namespace hostkit
