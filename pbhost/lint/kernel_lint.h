// Findings about one kernel.
#pragma once

#include "pbhost/lint/findings.h"
#include "pbhost/lint/kernel_outline.h"
#include "pixelbender/model.h"

namespace pbhost {

// The structure of the file, its names and its body. `hasControls` is false for a kernel in a
// graph.
void lintKernel(const KernelOutline& outline, const pbKernelInfo& kernel, bool hasControls,
                Findings& findings);

// The metadata of the kernel and of its parameters.
void lintMetadata(const KernelOutline& outline, const pbKernelInfo& kernel, bool hasControls,
                  Findings& findings);

} // namespace pbhost
