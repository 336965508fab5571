// WGL as the system declares it.
#pragma once

#include "platform/win32.h"
