// Offers the service of the orx.json named on the command line, with the installed DFX plug-in,
// until SIGINT or SIGTERM.
#include <signal.h>

#include <iostream>

#include "vorx/vcc/app/runtime.h"
#include "vorx/vcc/app/service_provider.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " ORX_JSON SERVICE\n";
        return 2;
    }
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
    int signal = 0;
    {
        vorx::vcc::app::Runtime::Options options;
        options.configPath = argv[1];
        options.pluginPath = ORX_DFX_PLUGIN_PATH;
        vorx::vcc::app::Runtime runtime(options);
        const auto provider = runtime.Provide(argv[2]);
        if (!provider || !provider->Offer()) {
            std::cerr << "cannot offer " << argv[2] << "\n";
            return 1;
        }
        std::cout << "offered " << argv[2] << std::endl;
        sigwait(&stop, &signal);
    }
    return 0;
}
