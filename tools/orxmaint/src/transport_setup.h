// Prepares this process to reach maintaind the way the applications and the daemon do: the DDS
// driver for the DDS binding, the DFX plug-in's DDS settings of the maintenance services, and the
// DDS domain.
#pragma once

#include <optional>

#include "cli/options.h"
#include "client/tools_client.h"

namespace orx::orxmaint {

// Reads the process's settings once (vorx::vcc::app::SetUpMaintenanceProcess: the DDS driver
// unless the environment or orx.json chooses another one, the DFX plug-in from <exe dir>/../lib,
// else ORX_DFX_PLUGIN or orx.json, loaded but never initialised: the tool never reports itself),
// with --domain over the configured DDS domain. Returns where to look for the tools service:
// instance from --instance-id, else orx.json, else "1". Returns std::nullopt with `exitCode` set
// after one line on stderr when the tool must not go on: 2 for a refused DDS domain or instance
// id (environment or orx.json), 1 when its own DDS participant cannot start.
std::optional<ClientSettings> SetUpTransport(const Options& options, int& exitCode);

}  // namespace orx::orxmaint
