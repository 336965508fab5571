#include "hostkit/host.h"

#include "hostkit/memory.h"
#include "hostkit/suites.h"

namespace hostkit {

Host::Host() : inData_{&memory::callbacks(), &suites::basicSuite(), nullptr} {}

} // namespace hostkit
