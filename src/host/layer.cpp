#include "host/layer.h"

#include "host/memory.h"

namespace AEO {

namespace {

using Layers = AEGP_LayerSuite12;
using Effects = AEGP_EffectSuite3;
using Streams = AEGP_StreamSuite9;
using Masks = AEGP_LayerMaskSuite5;

} // namespace

AEGP_ItemH Layer::sourceItem() {
    return query(layers_, &Layers::AEGP_GetLayerSourceItem, layer_);
}

AEGP_StreamRefH Layer::newLayerStream(AEGP_LayerStream which) {
    return query(streams_, &Streams::AEGP_GetNewLayerStream, currentPluginId, layer_, which);
}

AEGP_LayerIDVal Layer::id() {
    return query(layers_, &Layers::AEGP_GetLayerID, layer_);
}

AEGP_ObjectType Layer::objectType() {
    return query(layers_, &Layers::AEGP_GetLayerObjectType, layer_);
}

A_Time Layer::currentTime(AEGP_LTimeMode mode) {
    return query(layers_, &Layers::AEGP_GetLayerCurrentTime, layer_, mode);
}

AEGP_CompH Layer::parentComp() {
    return query(layers_, &Layers::AEGP_GetLayerParentComp, layer_);
}

WideString Layer::name() {
    AEGP_MemHandle text = nullptr;
    call(layers_, &Layers::AEGP_GetLayerName, currentPluginId, layer_, &text, nullptr);
    return readWideText(layers_.basic(), text);
}

WideString Layer::sourceName() {
    return readWideText(layers_.basic(), query(layers_, &Layers::AEGP_GetLayerName, currentPluginId,
                                               layer_, nullptr));
}

void Layer::setName(const A_UTF16Char* name) {
    call(layers_, &Layers::AEGP_SetLayerName, layer_, name);
}

AEGP_LayerFlags Layer::flags() {
    return query(layers_, &Layers::AEGP_GetLayerFlags, layer_);
}

void Layer::setFlag(AEGP_LayerFlags oneFlag, bool isSet) {
    call(layers_, &Layers::AEGP_SetLayerFlag, layer_, oneFlag, A_Boolean{isSet});
}

bool Layer::isVideoReallyOn() {
    return query(layers_, &Layers::AEGP_IsLayerVideoReallyOn, layer_) != 0;
}

A_Time Layer::inPoint(AEGP_LTimeMode mode) {
    return query(layers_, &Layers::AEGP_GetLayerInPoint, layer_, mode);
}

A_Time Layer::duration(AEGP_LTimeMode mode) {
    return query(layers_, &Layers::AEGP_GetLayerDuration, layer_, mode);
}

A_Matrix4 Layer::toWorld(const A_Time& compTime) {
    return query(layers_, &Layers::AEGP_GetLayerToWorldXform, layer_, &compTime);
}

AEGP_LayerH Layer::parent() {
    return query(layers_, &Layers::AEGP_GetLayerParent, layer_);
}

void Layer::setParent(AEGP_LayerH parent) {
    call(layers_, &Layers::AEGP_SetLayerParent, layer_, parent);
}

A_long Layer::numEffects() {
    return query(effects_, &Effects::AEGP_GetLayerNumEffects, layer_);
}

AEGP_EffectRefH Layer::newEffect(A_long index) {
    return query(effects_, &Effects::AEGP_GetLayerEffectByIndex, currentPluginId, layer_, index);
}

AEGP_EffectRefH Layer::applyEffect(AEGP_InstalledEffectKey key) {
    return query(effects_, &Effects::AEGP_ApplyEffect, currentPluginId, layer_, key);
}

A_long Layer::numMasks() {
    return query(masks_, &Masks::AEGP_GetLayerNumMasks, layer_);
}

AEGP_MaskRefH Layer::newMask(A_long index) {
    return query(masks_, &Masks::AEGP_GetLayerMaskByIndex, layer_, index);
}

void Layer::disposeMask(AEGP_MaskRefH mask) noexcept {
    dispose(masks_, &Masks::AEGP_DisposeMask, mask);
}

AEGP_MaskIDVal Layer::maskId(AEGP_MaskRefH mask) {
    return query(masks_, &Masks::AEGP_GetMaskID, mask);
}

AEGP_StreamRefH Layer::newOutlineStream(AEGP_MaskRefH mask) {
    return query(streams_, &Streams::AEGP_GetNewMaskOutlineStream, currentPluginId, mask);
}

AEGP_StreamVal2 Layer::streamValue(AEGP_LayerStream which, AEGP_LTimeMode mode, const A_Time& time,
                                   bool isBeforeExpression) {
    AEGP_StreamVal2 value = AEGP_StreamVal2();
    call(streams_, &Streams::AEGP_GetLayerStreamValue, layer_, which, mode, &time,
         A_Boolean{isBeforeExpression}, &value, nullptr);
    return value;
}

AEGP_LightType LightLayer::lightType() {
    return query(lights_, &AEGP_LightSuite2::AEGP_GetLightType, handle());
}

AEGP_CameraType CameraLayer::cameraType() {
    return query(cameras_, &AEGP_CameraSuite2::AEGP_GetCameraType, handle());
}

double CameraLayer::defaultDistance(AEGP_CompH comp) {
    return query(cameras_, &AEGP_CameraSuite2::AEGP_GetDefaultCameraDistanceToImagePlane, comp);
}

} // namespace AEO
