#include "shell/parameter_reading.h"

#include "engine/pb_graph.h"
#include "shell/control_layout.h"
#include "shell/control_values.h"

namespace {

// Reads the controls of one parameter, which lie next to each other.
class ParameterReader {
public:
    ParameterReader(const GraphParameter& parameter, ParamCheckout& controls)
        : parameter_(parameter), controls_(controls) {}

    pbValue read(float downsampleX, float downsampleY) {
        switch (controlForm(parameter_.parameter)) {
        case ControlForm::Popup:
        case ControlForm::Enum:
            value_.ints[0] = control(0).pd.value - 1; // the host counts choices from 1
            break;
        case ControlForm::Angle:
        case ControlForm::AngleDegrees:
            value_.floats[0] = fromFixed(control(0).ad.value);
            break;
        case ControlForm::PercentSlider:
        case ControlForm::OneChannelColor:
            value_.floats[0] = fromFixed(control(0).fs_d.value);
            break;
        case ControlForm::Point:
        case ControlForm::Position:
            readPoint(control(0).td, downsampleX, downsampleY);
            break;
        case ControlForm::Color:
        case ControlForm::ColorRGBA:
            readColor(control(0).cd.value);
            break;
        case ControlForm::ColorRGB:
            readColor(control(0).cd.value);
            value_.floats[3] = 0;
            break;
        case ControlForm::Ints:
            forEach([&](std::size_t k) { value_.ints[k] = control(k).sd.value; });
            break;
        case ControlForm::Percentages:
        case ControlForm::Floats:
            forEach([&](std::size_t k) { value_.floats[k] = fromFixed(control(k).fs_d.value); });
            break;
        case ControlForm::Bools:
            forEach([&](std::size_t k) { value_.bytes[k] = control(k).bd.value != 0 ? 1 : 0; });
            break;
        case ControlForm::None:
            break;
        }
        return value_;
    }

private:
    PF_ParamDefUnion control(std::size_t k) {
        return controls_.read(parameter_.slot + static_cast<std::int32_t>(k)).u;
    }

    template<class ReadComponent>
    void forEach(ReadComponent readComponent) {
        const auto count = static_cast<std::size_t>(controlsOf(parameter_.parameter));
        for (std::size_t k = 0; k < count; ++k)
            readComponent(k);
    }

    void readPoint(const PF_PointDef& point, float downsampleX, float downsampleY) {
        value_.floats[0] = fromFixed(point.x_value) / downsampleX;
        value_.floats[1] = fromFixed(point.y_value) / downsampleY;
    }

    void readColor(const PF_Pixel& color) {
        value_.floats[0] = static_cast<float>(color.red / 255.0);
        value_.floats[1] = static_cast<float>(color.green / 255.0);
        value_.floats[2] = static_cast<float>(color.blue / 255.0);
        value_.floats[3] = static_cast<float>(color.alpha / 255.0);
    }

    const GraphParameter& parameter_;
    ParamCheckout& controls_;
    pbValue value_{};
};

} // namespace

void readParameters(pbGraph& graph, ParamCheckout& controls, float downsampleX, float downsampleY) {
    // All are read before the first is set: the graph serves every instance of its file, and the
    // host may render another one while it answers.
    HostVector<pbValue> values;
    values.reserve(graph.parameters.size());
    for (const auto& parameter : graph.parameters)
        values.push_back(
            parameter->slot < 0
                ? parameter->value
                : ParameterReader(*parameter, controls).read(downsampleX, downsampleY));
    for (std::size_t i = 0; i < values.size(); ++i)
        graph.parameters[i]->value = values[i];
}
