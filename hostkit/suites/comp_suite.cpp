// Suite for compositions.
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

A_Err getItemFromComp(AEGP_CompH comp, AEGP_ItemH* item) {
    return serve<AEGP_CompSuite11>("AEGP_GetItemFromComp", [&](const SceneCall& call) {
        call.at(item) = handleOf(static_cast<Item*>(&call.composition(comp)));
    });
}

A_Err getCompFramerate(AEGP_CompH comp, A_FpLong* framesPerSecond) {
    return serve<AEGP_CompSuite11>("AEGP_GetCompFramerate", [&](const SceneCall& call) {
        call.at(framesPerSecond) = call.composition(comp).frameRate;
    });
}

A_Err setCompFramerate(AEGP_CompH comp, const A_FpLong* framesPerSecond) {
    return serve<AEGP_CompSuite11>("AEGP_SetCompFramerate", [&](const SceneCall& call) {
        Composition& found = call.composition(comp);
        const A_FpLong wanted = call.at(framesPerSecond);
        if (!(wanted > 0))
            call.fail("a frame rate that is not above 0");
        found.frameRate = wanted;
    });
}

} // namespace

const AEGP_CompSuite11& compSuite() {
    static const AEGP_CompSuite11 table = {getItemFromComp, getCompFramerate, setCompFramerate};
    return table;
}

} // namespace hostkit::tables
