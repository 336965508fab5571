// An instance of the effect with a kernel that has every kind of control.
#pragma once

#include "fuzz/fuzz_support.h"
#include "hostkit/services/memory.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/scene.h"

namespace fuzz {

inline constexpr std::string_view kernelOfAllKinds = R"(<languageVersion : 1.0;>
kernel Kinds < namespace : "n"; vendor : "v"; version : 1; >
{
    input image4 src;
    input image4 other;
    output pixel4 dst;
    parameter float amount < minValue: 0.0; maxValue: 1.0; defaultValue: 0.5; >;
    parameter float3 center < minValue: float3(0); maxValue: float3(9); >;
    parameter int count < minValue: 1; maxValue: 8; defaultValue: 2; >;
    parameter bool isOn < defaultValue: true; >;
    parameter int mode < aeUIControl: "aePopup"; aePopupString: "One|Two|Three"; maxValue: 3; >;
    parameter float turn < aeUIControl: "aeAngle"; maxValue: 360.0; >;
    parameter float2 spot < aeUIControl: "aePoint"; >;
    parameter float4 shade < aeUIControl: "aeColor"; >;
    void evaluatePixel() {
        dst = sampleNearest(src, outCoord()) + sampleNearest(other, outCoord());
    }
}
)";

struct SceneOfAllKinds {
    SceneOfAllKinds()
        : session({TVM_MODULE_PATH, folder.path + "/preferences.json", {}, false}),
          scene(session, pbhost::transparentSource(4, 4, pbhost::Depth::Bits8)) {
        const std::string kernel = folder.path + "/kinds.pbk";
        pbhost::writeTextFile(kernel, std::string(kernelOfAllKinds));
        scene.apply(kernel);
        handles = hostkit::memory::liveHandles();
    }

    pbhost::TemporaryFolder folder;
    pbhost::Session session;
    pbhost::Scene scene;
    std::size_t handles = 0; // live handles between inputs
};

} // namespace fuzz
