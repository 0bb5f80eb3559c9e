/* A second agent module, as another module of the controller's agent would
 * use doIpmiCmd: a GET of 1.3.6.1.4.1.53917.99.1.<netfn>.<cmd>[.<data>...]
 * sends those bytes through doIpmiCmd and answers its message, prefixed
 * with its result ("1 IPMI_DoIPMICmd(06 01 )->00 , rc=0\n"). Test use only. */
// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
// clang-format on

#include <stdint.h>
#include <stdio.h>
#include <string.h>

int doIpmiCmd(uint8_t *request, int32_t requestLength, uint8_t *response, int32_t *responseLength, char *message);

static const oid probe_oid[] = {1, 3, 6, 1, 4, 1, 53917, 99, 1};
enum { PROBE_ARCS = sizeof probe_oid / sizeof probe_oid[0], MAX_REQUEST = 64 };

static int probe_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                         netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests)
{
    (void)handler;
    (void)reginfo;
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        netsnmp_variable_list *vb = request->requestvb;
        if (reqinfo->mode != MODE_GET || vb->name_length < PROBE_ARCS + 2 ||
            vb->name_length - PROBE_ARCS > MAX_REQUEST) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHINSTANCE);
            continue;
        }
        uint8_t bytes[MAX_REQUEST];
        int32_t length = (int32_t)(vb->name_length - PROBE_ARCS);
        for (int32_t i = 0; i < length; ++i)
            bytes[i] = (uint8_t)vb->name[PROBE_ARCS + i];
        uint8_t response[64];
        int32_t responseLength = 0;
        char message[512];
        char answer[520];
        int result = doIpmiCmd(bytes, length, response, &responseLength, message);
        snprintf(answer, sizeof answer, "%d %s", result, message);
        snmp_set_var_typed_value(vb, ASN_OCTET_STR, answer, strlen(answer));
    }
    return SNMP_ERR_NOERROR;
}

void init_ipmi_probe(void)
{
    netsnmp_register_handler(
        netsnmp_create_handler_registration("ipmi_probe", probe_handler, probe_oid, PROBE_ARCS, HANDLER_CAN_RONLY));
}
