// A layer of a composition. Its handle is owned by the host; the caller owns references that an
// operation calls "new".
#pragma once

#include "host/object_base.h"
#include "sdk/aegp_suites.h"
#include "support/text.h"

namespace AEO {

class Layer : public ObjectBase {
public:
    Layer(SPBasicSuite* basic, AEGP_LayerH layer)
        : layer_(layer), layers_(basic), effects_(basic), streams_(basic), masks_(basic) {}

    AEGP_LayerH handle() const { return layer_; }

    AEGP_ItemH sourceItem(); // null: none
    AEGP_StreamRefH newLayerStream(AEGP_LayerStream which);

    AEGP_LayerIDVal id();
    AEGP_ObjectType objectType();
    A_Time currentTime(AEGP_LTimeMode mode);
    AEGP_CompH parentComp();
    WideString name(); // empty: the source's name is used
    WideString sourceName();
    void setName(const A_UTF16Char* name);
    AEGP_LayerFlags flags();
    void setFlag(AEGP_LayerFlags oneFlag, bool isSet);
    bool isVideoReallyOn();
    A_Time inPoint(AEGP_LTimeMode mode);
    A_Time duration(AEGP_LTimeMode mode);
    A_Matrix4 toWorld(const A_Time& compTime);
    AEGP_LayerH parent(); // null: none
    void setParent(AEGP_LayerH parent);

    A_long numEffects();
    AEGP_EffectRefH newEffect(A_long index);
    AEGP_EffectRefH applyEffect(AEGP_InstalledEffectKey key); // a new reference

    // newMask returns a new reference, to be released by `disposeMask`; newOutlineStream returns
    // one for a Stream to own.
    A_long numMasks();
    AEGP_MaskRefH newMask(A_long index);
    void disposeMask(AEGP_MaskRefH mask) noexcept;
    AEGP_MaskIDVal maskId(AEGP_MaskRefH mask);
    AEGP_StreamRefH newOutlineStream(AEGP_MaskRefH mask);

    // The transform streams at a time. Rotations are in degrees, scale and opacity in percent,
    // points in pixels.
    AEGP_StreamVal2 anchorPoint(AEGP_LTimeMode mode, const A_Time& time,
                                bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_ANCHORPOINT, mode, time, isBeforeExpression);
    }
    AEGP_StreamVal2 position(AEGP_LTimeMode mode, const A_Time& time,
                             bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_POSITION, mode, time, isBeforeExpression);
    }
    AEGP_StreamVal2 scale(AEGP_LTimeMode mode, const A_Time& time,
                          bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_SCALE, mode, time, isBeforeExpression);
    }
    double rotation(AEGP_LTimeMode mode, const A_Time& time, bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_ROTATION, mode, time, isBeforeExpression).one_d;
    }
    double opacity(AEGP_LTimeMode mode, const A_Time& time, bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_OPACITY, mode, time, isBeforeExpression).one_d;
    }
    AEGP_StreamVal2 orientation(AEGP_LTimeMode mode, const A_Time& time,
                                bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_ORIENTATION, mode, time, isBeforeExpression);
    }
    double rotateX(AEGP_LTimeMode mode, const A_Time& time, bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_ROTATE_X, mode, time, isBeforeExpression).one_d;
    }
    double rotateY(AEGP_LTimeMode mode, const A_Time& time, bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_ROTATE_Y, mode, time, isBeforeExpression).one_d;
    }

protected:
    AEGP_StreamVal2 streamValue(AEGP_LayerStream which, AEGP_LTimeMode mode, const A_Time& time,
                                bool isBeforeExpression);

private:
    AEGP_LayerH layer_;
    SuiteHolder<AEGP_LayerSuite12> layers_;
    SuiteHolder<AEGP_EffectSuite3> effects_;
    SuiteHolder<AEGP_StreamSuite9> streams_;
    SuiteHolder<AEGP_LayerMaskSuite5> masks_;
};

class LightLayer : public Layer {
public:
    LightLayer(SPBasicSuite* basic, AEGP_LayerH layer) : Layer(basic, layer), lights_(basic) {}

    AEGP_LightType lightType();

private:
    SuiteHolder<AEGP_LightSuite2> lights_;
};

class CameraLayer : public Layer {
public:
    // The layer may be null for defaultDistance, which needs no camera.
    CameraLayer(SPBasicSuite* basic, AEGP_LayerH layer) : Layer(basic, layer), cameras_(basic) {}

    AEGP_CameraType cameraType();
    // Distance from the eye to the image plane in pixels.
    double zoom(AEGP_LTimeMode mode, const A_Time& time, bool isBeforeExpression = false) {
        return streamValue(AEGP_LayerStream_ZOOM, mode, time, isBeforeExpression).one_d;
    }
    // Zoom of a composition's default camera, which has no layer.
    double defaultDistance(AEGP_CompH comp);

private:
    SuiteHolder<AEGP_CameraSuite2> cameras_;
};

} // namespace AEO
