// orv3-monitors-agentx: serves the monitors module, unchanged, as an AgentX
// subagent of a master snmpd ("master agentx" in its snmpd.conf). The
// platform services come from the process, as in snmpd: on the controller
// from the firmware's libraries, elsewhere from the simulator preloaded
// with LD_PRELOAD.
#include "commit_at_commitset.h"

#include <dlfcn.h>
#include <getopt.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#ifndef ORV3_AGENTX_MODULE
#define ORV3_AGENTX_MODULE "liborv3_monitors.so"
#endif

namespace {

constexpr char kName[] = "orv3-monitors-agentx";
constexpr char kModuleInit[] = "init_snmp_module_monitors";
const oid kMonitorsRoot[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1};
// How often the subagent pings its master, and tries to reach it again
// when it has gone: a restarted snmpd gets the module back by itself.
constexpr int kDefaultPingSeconds = 15;

volatile sig_atomic_t keepRunning = 1;

void stopRunning(int)
{
    keepRunning = 0;
}

void usage(FILE *out)
{
    fprintf(out,
            "usage: %s [-x SOCKET] [-M MODULE] [-D TOKENS] [-L LOGOPTS] [-h]\n"
            "  -x SOCKET   the master's AgentX socket (net-snmp's default: /var/agentx/master)\n"
            "  -M MODULE   the monitors module to serve (default %s)\n"
            "  -D TOKENS   turn on net-snmp debug output for these tokens, as snmpd -D\n"
            "  -L LOGOPTS  where to log, as snmpd -L (default: standard error)\n"
            "  -h          this help\n",
            kName, ORV3_AGENTX_MODULE);
}

// Loads the module as snmpd's dlmod does and lets it register its objects.
bool loadModule(const char *path)
{
    void *module = dlopen(path, RTLD_NOW);
    if (!module) {
        snmp_log(LOG_ERR, "%s: cannot load the module: %s\n", kName, dlerror());
        return false;
    }
    auto init = reinterpret_cast<void (*)()>(dlsym(module, kModuleInit));
    if (!init) {
        snmp_log(LOG_ERR, "%s: %s has no %s\n", kName, path, kModuleInit);
        return false;
    }
    init();
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const char *socket = nullptr;
    const char *module = ORV3_AGENTX_MODULE;
    bool logChosen = false;
    int option;
    while ((option = getopt(argc, argv, "x:M:D:L:h")) != -1) {
        switch (option) {
        case 'x': socket = optarg; break;
        case 'M': module = optarg; break;
        case 'D':
            debug_register_tokens(optarg);
            snmp_set_do_debugging(1);
            break;
        case 'L':
            if (snmp_log_options(optarg, argc, argv) < 0) {
                usage(stderr);
                return 2;
            }
            logChosen = true;
            break;
        case 'h': usage(stdout); return 0;
        default: usage(stderr); return 2;
        }
    }
    if (optind < argc) {
        usage(stderr);
        return 2;
    }
    if (!logChosen)
        snmp_enable_stderrlog();

    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
    if (socket)
        netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET, socket);
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_PING_INTERVAL, kDefaultPingSeconds);

    init_agent(kName);
    if (!loadModule(module))
        return 1;
    const size_t injected = orv3::agentx::injectCommitAtCommitSet(kMonitorsRoot, std::size(kMonitorsRoot));
    DEBUGMSGTL(("orv3-agentx", "commit at CommitSet in %zu registrations\n", injected));
    init_snmp(kName);

    signal(SIGTERM, stopRunning);
    signal(SIGINT, stopRunning);
    snmp_log(LOG_INFO, "%s: serving %s through the AgentX master at %s\n", kName, module,
             socket ? socket : "the default socket");
    while (keepRunning)
        agent_check_and_process(1);
    snmp_shutdown(kName);
    return 0;
}
