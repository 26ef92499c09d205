// orx-demo: a small radar / sensor-fusion system on the communication core, with maintenance
// reporting through the DFX plug-in.
//
//   orx-demo radar    offers /demo/RadarService (examples/radar/orx.json)
//   orx-demo fusion   uses it (examples/fusion/orx.json)
//
// ORX_CONFIG names another orx.json; ORX_DFX_PLUGIN another plug-in.
#include <iostream>
#include <string>

#include "demo_apps.h"
#include "demo_support.h"
#include "vorx/vcc/app/process_settings.h"
#include "vorx/vcc/app/runtime.h"

int main(int argc, char** argv) {
    const std::string role = argc > 1 ? argv[1] : "";
    if (argc != 2 || (role != "radar" && role != "fusion")) {
        std::cerr << "usage: " << argv[0] << " radar|fusion\n";
        return 2;
    }
    demo::BlockDemoSignals();  // before the runtime starts any thread
    vorx::vcc::app::Runtime::Options options;
    options.configPath = demo::ExampleConfig(argv[0], role);
    options.pluginPath = vorx::vcc::app::PluginBesideExecutable();
    int status = 0;
    {
        vorx::vcc::app::Runtime runtime(options);
        status = role == "radar" ? demo::RunRadar(runtime) : demo::RunFusion(runtime);
    }
    // Returning from main runs the static destructors; the plug-in's client sends the offline
    // report from there.
    return status;
}
