// The debug output of this process while some work runs, as UTF-8.
//
// On Linux, TVELMARONDINE_DEBUG is set in the environment meanwhile.
#pragma once

#include <functional>
#include <string>

std::string debugOutputOf(const std::function<void()>& work);
