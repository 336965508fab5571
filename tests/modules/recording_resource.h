// The resource of the recording module, with its entry point and flags.
#pragma once

#include <string>

#include "tests/modules/recording_module.h"

inline std::string number(std::size_t value) {
    return {reinterpret_cast<const char*>(&value), 4};
}

inline std::string property(const std::string& key, const std::string& data) {
    return "8BIM" + key + number(0) + number(data.size()) + data +
           std::string((4 - data.size() % 4) % 4, '\0');
}

inline std::string recordingResource() {
    return "PIPL" + number(16000) + number(6) + property("name", "\x08Recorder") +
           property("wx86", "\x0ErecordingEntry") + property("eMNA", "\x04Test") +
           property("eVER", number(recordingModuleVersion)) +
           property("eGLO", number(recordingModuleFlags)) +
           property("eGL2", number(recordingModuleFlags2));
}
