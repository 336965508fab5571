// Target: a --set text, applied to an instance with every kind of control.
#include "fuzz/control_kinds.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/control_setting.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::SceneOfAllKinds& all = *new fuzz::SceneOfAllKinds;
    try {
        const std::string text(fuzz::textOf(data, size));
        pbhost::applySetting(all.scene.effect, pbhost::parseSetting("--set", text), 0);
    } catch (const pbhost::Failure&) {
        // Thrown for a text that fits no control.
    }
    fuzz::requireNothingLeft(all.handles);
    return 0;
}
