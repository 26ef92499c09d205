#ifndef ORX_EXAMPLES_DEMO_DEMO_APPS_H
#define ORX_EXAMPLES_DEMO_DEMO_APPS_H

#include "vorx/vcc/app/runtime.h"

namespace demo {

// The two sides of the demo. Each runs until SIGINT or SIGTERM and returns the exit status.
int RunRadar(vorx::vcc::app::Runtime& runtime);
int RunFusion(vorx::vcc::app::Runtime& runtime);

}  // namespace demo

#endif  // ORX_EXAMPLES_DEMO_DEMO_APPS_H
