#ifndef VORX_VCC_APP_SRC_BINDING_PARSER_H
#define VORX_VCC_APP_SRC_BINDING_PARSER_H

#include <memory>
#include <string>

#include "entity_scope.h"
#include "vorx/vcc/app/deployment.h"

// Readers of the binding-specific and shared blocks of a deployment: DDS and SOME/IP settings,
// E2E protection, serialization settings. Each fills what the file gives and leaves the defaults
// of the rest; problems go to the scope's log (see EntityScope).
namespace vorx::vcc::app::detail {

void ParseDdsServiceBinding(EntityScope& scope, DdsServiceBinding& out);
void ParseSomeipServiceBinding(EntityScope& scope, SomeipServiceBinding& out);
void ParseDdsEventBinding(EntityScope& scope, DdsEventBinding& out);
// `scope` holds the event's "someip" object; the event id is mandatory.
void ParseSomeipEventBinding(EntityScope& scope, SomeipEventBinding& out);
void ParseDdsMethodBinding(EntityScope& scope, DdsMethodBinding& out);
// `scope` holds the method's "someip" object; the method id is mandatory.
void ParseSomeipMethodBinding(EntityScope& scope, SomeipMethodBinding& out);

// The "e2e" object of an entity; its profile is mandatory.
std::shared_ptr<api::types::E2EXfConfig> ParseE2E(EntityScope& scope);
// A serialization setting object {"type": "someip" | "cdr" | "raw", "config": text} under `name`
// of `parent`; absent keys keep `out` as it is.
void ParseSerializeSetting(EntityScope& parent, const std::string& name,
                           api::types::SerializeSetting& out);
// A SOME/IP serialization tree under `name` of `parent`.
void ParseSerializationTree(EntityScope& parent, const std::string& name,
                            serialize::SerializationNode& out);

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_BINDING_PARSER_H
