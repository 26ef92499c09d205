#ifndef VORX_VCC_APP_SRC_DDS_TOPICS_H
#define VORX_VCC_APP_SRC_DDS_TOPICS_H

#include "vorx/vcc/app/deployment.h"

namespace vorx::vcc::app::detail {

// Hands the DDS topics of a deployment's events, methods and field parts to the process's DDS
// driver, so that both ends of a service meet on the topics their deployments name. Does nothing
// for a service without DDS binding or when the DDS binding runs on another driver (the
// in-process one, in tests). Call before the service is offered or looked for.
void ApplyDdsTopics(const ServiceDeployment& service);

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_DDS_TOPICS_H
