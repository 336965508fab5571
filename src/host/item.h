// An item: the source of a layer, or a composition. Its handle is owned by the host.
#pragma once

#include "host/memory.h"

namespace AEO {

class Item : public ObjectBase {
public:
    // Queries the dimensions.
    Item(SPBasicSuite* basic, AEGP_ItemH item) : item_(item), items_(basic) {
        call(items_, &AEGP_ItemSuite13::AEGP_GetItemDimensions, item_, &width_, &height_);
    }

    A_long width() const { return width_; } // pixels; 0 if the query failed
    A_long height() const { return height_; }

    // Width of a pixel divided by its height; 0/1 if the query fails.
    A_Ratio pixelAspect() {
        A_Ratio ratio{0, 1};
        call(items_, &AEGP_ItemSuite13::AEGP_GetItemPixelAspectRatio, item_, &ratio);
        return ratio;
    }

    WideString name() {
        return readWideText(items_.basic(), query(items_, &AEGP_ItemSuite13::AEGP_GetItemName,
                                                  currentPluginId, item_));
    }

private:
    AEGP_ItemH item_;
    SuiteHolder<AEGP_ItemSuite13> items_;
    A_long width_ = 0;
    A_long height_ = 0;
};

} // namespace AEO
