#ifndef VORX_VCC_APP_DEPLOYMENT_PARSER_H
#define VORX_VCC_APP_DEPLOYMENT_PARSER_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "vorx/vcc/app/deployment.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc::app {

struct DeploymentParseResult {
    // The usable deployments, in file order.
    std::vector<ServiceDeployment> services;
    // One text per problem found, exactly as it was logged.
    std::vector<std::string> errors;
};

// Reads the "services" array of a parsed orx.json (`document`, read from `filePath`; the path is
// only named in messages). Never throws, whatever the content.
//
// Rules, each problem giving one error line on the "CM" logger that names the file and the key
// (e.g. "services[0].events[1].entityId") and one entry in `errors`:
//   - an optional value of the wrong type or out of range is ignored: its default applies
//     ("[App][Invalid deployment value, ignored][...]");
//   - a missing or bad mandatory value (a service's "service", "serviceId", "role", "bindings",
//     a provided service's "instanceId"; an entity's "name" and "entityId"; a SOME/IP event's
//     "eventId" and method's "methodId"), a duplicate entity id or name, or a reserved service id
//     skips that entity, or the whole service for a service-level value
//     ("[App][Deployment skipped][...]").
// No "services" key gives no deployments and no error.
VCC_EXPORT DeploymentParseResult ParseDeployments(const nlohmann::json& document,
                                                  const std::string& filePath);

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_DEPLOYMENT_PARSER_H
