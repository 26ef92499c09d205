// Prepares this process to reach maintaind the way the applications and the daemon do: the DDS
// driver for the DDS binding, the DFX plug-in's DDS settings of the maintenance services, and the
// DDS domain.
#pragma once

#include "cli/options.h"
#include "client/tools_client.h"

namespace orx::orxmaint {

// Applies --domain (as ORX_DDS_DOMAIN), selects the DDS driver unless the environment or orx.json
// chooses another one, and loads the DFX plug-in from <exe dir>/../lib (else from ORX_DFX_PLUGIN
// or orx.json) without initialising it: the tool never reports itself. Returns where to look
// for the tools service: instance from --instance-id, else orx.json, else "1".
ClientSettings SetUpTransport(const Options& options);

}  // namespace orx::orxmaint
