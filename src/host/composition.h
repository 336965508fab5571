// A composition: its item and its layers, topmost first. All handles are owned by the host.
#pragma once

#include "host/object_base.h"
#include "sdk/aegp_suites.h"

namespace AEO {

class Composition : public ObjectBase {
public:
    Composition(SPBasicSuite* basic, AEGP_CompH comp)
        : comp_(comp), comps_(basic), layers_(basic) {}

    AEGP_CompH handle() const { return comp_; }

    AEGP_ItemH item() { return query(comps_, &AEGP_CompSuite11::AEGP_GetItemFromComp, comp_); }

    // Frames per second.
    double frameRate() { return query(comps_, &AEGP_CompSuite11::AEGP_GetCompFramerate, comp_); }
    void setFrameRate(double framesPerSecond) {
        call(comps_, &AEGP_CompSuite11::AEGP_SetCompFramerate, comp_, &framesPerSecond);
    }

    A_long numLayers() { return query(layers_, &AEGP_LayerSuite12::AEGP_GetCompNumLayers, comp_); }
    AEGP_LayerH layer(A_long index) {
        return query(layers_, &AEGP_LayerSuite12::AEGP_GetCompLayerByIndex, comp_, index);
    }
    AEGP_LayerH layerById(AEGP_LayerIDVal id) {
        return query(layers_, &AEGP_LayerSuite12::AEGP_GetLayerFromLayerID, comp_, id);
    }

private:
    AEGP_CompH comp_;
    SuiteHolder<AEGP_CompSuite11> comps_;
    SuiteHolder<AEGP_LayerSuite12> layers_;
};

} // namespace AEO
