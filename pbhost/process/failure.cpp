#include "pbhost/process/failure.h"

#include <iostream>

#include "pbhost/files/printable.h"

namespace pbhost {

namespace {

int reportError(ExitCode code, const std::string& message) {
    std::cerr << "pbhost: " << printable(message) << (message.ends_with('\n') ? "" : "\n");
    return static_cast<int>(code);
}

} // namespace

int exitCodeOf(const std::function<int()>& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        return reportError(failure.code, failure.what());
    } catch (const std::bad_alloc&) {
        return reportError(ExitCode::RenderFailed, "out of memory");
    } catch (long) { // thrown by code shared with the module when it is out of memory
        return reportError(ExitCode::RenderFailed, "out of memory");
    } catch (const std::exception& error) {
        return reportError(ExitCode::RenderFailed, error.what());
    }
}

} // namespace pbhost
