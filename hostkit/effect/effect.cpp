#include "hostkit/effect/effect.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "hostkit/calls/ledger.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/host.h"
#include "hostkit/services/memory.h"
#include "hostkit/services/text.h"

namespace hostkit {

namespace {

void requireSuccess(PF_Err error, const std::string& what) {
    if (error != PF_Err_NONE)
        throw std::runtime_error(what + " returned " + std::to_string(error));
}

void copyValues(const Stream& from, Stream& to) {
    to.constant = from.constant;
    to.keyframes = from.keyframes;
    to.expression = from.expression;
    to.isExpressionEnabled = from.isExpressionEnabled;
    to.isModified = from.isModified;
}

std::string matchNameOf(const Pipl& pipl, std::size_t index) {
    char number[16];
    std::snprintf(number, sizeof number, "-%04zu", index);
    return pipl.text("eMNA") + number;
}

} // namespace

Effect::Effect(Plugin& owner, Layer& ownerLayer)
    : plugin(&owner), layer(&ownerLayer),
      group(std::make_unique<Stream>(toUtf16(owner.pipl().text("name")), owner.pipl().text("eMNA"),
                                     AEGP_StreamType_NO_DATA)) {
    group->layer = layer;
    addControl(PF_ParamDef{}); // the input layer
    control(0).constant.value.layer_id = layer->id;
}

Effect::~Effect() {
    if (sequenceData != nullptr)
        setDownSequence();
    if (sequenceData == nullptr)
        return;
    ledger::fault("PF_Cmd_SEQUENCE_SETDOWN did not dispose of the sequence data");
    memory::drop(sequenceData);
}

PF_Err Effect::apply() {
    PF_Err error = setUpParameters();
    if (error == PF_Err_NONE)
        error = setUpSequence();
    if (error == PF_Err_NONE && (outFlags & PF_OutFlag_SEND_DO_DIALOG) != 0 &&
        hasOutFlag(PF_OutFlag_I_DO_DIALOG))
        error = doDialog();
    if (error == PF_Err_NONE && hasOutFlag(PF_OutFlag_SEND_UPDATE_PARAMS_UI))
        error = updateParamsUi();
    return error;
}

PF_Err Effect::open(const std::vector<std::byte>& flatBlock,
                    const std::function<void(Effect&)>& fillStreams) {
    PF_Err error = setUpParameters();
    if (error != PF_Err_NONE)
        return error;
    sequenceData = memory::store(flatBlock);
    if (sequenceData == nullptr)
        return PF_Err_OUT_OF_MEMORY;
    error = resetUpSequence();
    if (error == PF_Err_NONE && fillStreams)
        fillStreams(*this);
    if (error == PF_Err_NONE && hasOutFlag(PF_OutFlag_SEND_UPDATE_PARAMS_UI))
        error = updateParamsUi();
    return error;
}

std::vector<std::byte> Effect::save() {
    const bool isFlattened = hasOutFlag(PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING);
    if (isFlattened)
        requireSuccess(flattenSequence(), "PF_Cmd_SEQUENCE_FLATTEN");
    std::vector<std::byte> block;
    if (sequenceData != nullptr)
        block = memory::contents(sequenceData);
    if (isFlattened)
        requireSuccess(resetUpSequence(), "PF_Cmd_SEQUENCE_RESETUP");
    return block;
}

Effect& Effect::duplicate() {
    const std::vector<std::byte> block = save();
    auto& all = layer->effects;
    const auto self = std::ranges::find(all, this, [](const auto& effect) { return effect.get(); });
    const auto place = self == all.end() ? self : std::next(self);
    Effect& copy = **all.insert(place, std::make_unique<Effect>(*plugin, *layer));
    const PF_Err error = copy.open(block, [this](Effect& filled) {
        for (std::size_t i = 1; i < filled.definitions.size(); ++i)
            copyValues(control(i), filled.control(i));
    });
    requireSuccess(error, "opening the duplicate");
    return copy;
}

PF_ParamDef Effect::valueAt(std::size_t index, double compSeconds) const {
    return valueAtLayerTime(index, compSeconds - layer->inSeconds, Resolution());
}

PF_ParamDef Effect::valueAtLayerTime(std::size_t index, double layerSeconds,
                                     const Resolution& resolution) const {
    PF_ParamDef definition = definitions.at(index);
    kindOf(definition)
        .write(definition.u, group->children.at(index)->withExpression(layerSeconds).value, *layer,
               resolution);
    return definition;
}

std::string Effect::title() const {
    return toUtf8(group->name);
}

Stream& Effect::control(std::size_t index) {
    return *group->children.at(index);
}

int Effect::componentBytes() const {
    return Host::current().project.componentBytes;
}

bool Effect::hasOutFlag(A_long outFlag) const {
    return (plugin->outFlags() & static_cast<A_u_long>(outFlag)) != 0;
}

void Effect::addControl(const PF_ParamDef& definition) {
    const ControlKind& kind = kindOf(definition);
    auto stream = std::make_unique<Stream>(
        toUtf16(definition.name), matchNameOf(plugin->pipl(), definitions.size()), kind.streamType);
    stream->choices = choiceCount(definition);
    stream->set({kind.start(definition.u, *layer)}, 0);
    stream->isModified = false;
    stream->parent = group.get();
    stream->layer = layer;
    group->children.push_back(std::move(stream));
    definitions.push_back(definition);
}

void Effect::configureControl(std::size_t index, const PF_ParamDef& look) {
    PF_ParamDef& definition = definitions[index];
    std::memcpy(definition.name, look.name, sizeof definition.name);
    definition.flags = look.flags;
    kindOf(definition).configure(definition.u, look.u);
    Stream& stream = control(index);
    stream.name = toUtf16(look.name);
    stream.choices = choiceCount(look);
    // The stored value is kept, but clamped if there are fewer choices now.
    if (stream.choices > 0 && stream.keyframes.empty())
        stream.set(stream.constant, 0);
}

Effect& addEffect(Plugin& plugin, Layer& layer) {
    return *layer.effects.emplace_back(std::make_unique<Effect>(plugin, layer));
}

} // namespace hostkit
