// machineVpd: the machine's type, model, serial number, UUID and product
// name, 1.3.6.1.4.1.53917.11.1.1.5.2.1.1.0 to .5.0, read-only texts of up to
// 256 bytes read from the store under "s/vpd/machine" on every GET (no
// cache). Type and model come from one store text, split by the
// manufacturer (updateOEMTypeModel).
#include "inventory.h"
#include "trace.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr uint32_t kMaxText = 256;
constexpr char kErrorToken[] = "SNMP_Error ";

#define MACHINE_VPD_OID(arc)                                                                                           \
    {                                                                                                                  \
        1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 2, 1, arc, 0                                                             \
    }
const oid machineLevelVpdMachineType_oid[] = MACHINE_VPD_OID(1);
const oid machineLevelVpdMachineModel_oid[] = MACHINE_VPD_OID(2);
const oid machineLevelSerialNumber_oid[] = MACHINE_VPD_OID(3);
const oid machineLevelUUID_oid[] = MACHINE_VPD_OID(4);
const oid machineLevelProductName_oid[] = MACHINE_VPD_OID(5);

} // namespace

// Buffers and a declaration record of one text variable bound to `storeVar`;
// `getFn` reads it instead of the generic store read when it is not null.
// The size of the working buffer (store_size) is given at registration.
#define MACHINE_VPD_VARIABLE(var, storeVar, getFn)                                                                     \
    {                                                                                                                  \
        .oid = var##_oid, .oid_len = OID_LENGTH(var##_oid), .name = #var, .asn_type = ASN_OCTET_STR,                   \
        .vb_value = var##_vbvalue, .vb_size = &var##_vbsize, .mib_value = var##_mibvalue,                              \
        .mib_cursize = &var##_mibcursize, .mib_maxsize = kMaxText, .store_var = storeVar,                              \
        .store_type = QUEL_DM_TYPE_STRING, .reserved = 0, .store_size = 0, .user_var = nullptr, .requester = "",       \
        .get_fn = getFn, .validate_fn = nullptr, .set_fn = nullptr, .reserved2 = 0,                                    \
    }
#define MACHINE_VPD_BUFFERS(var)                                                                                       \
    char var##_vbvalue[kMaxText + 1];                                                                                  \
    uint32_t var##_vbsize;                                                                                             \
    char var##_mibvalue[kMaxText + 1];                                                                                 \
    uint32_t var##_mibcursize;

extern "C" {

MACHINE_VPD_BUFFERS(machineLevelVpdMachineType)
MACHINE_VPD_BUFFERS(machineLevelVpdMachineModel)
MACHINE_VPD_BUFFERS(machineLevelSerialNumber)
MACHINE_VPD_BUFFERS(machineLevelUUID)
MACHINE_VPD_BUFFERS(machineLevelProductName)

int32_t machineVpdHandlerState = 0;
quel_dm_varlist_t pmachineVpdVars = nullptr;
int32_t machineVpdVarListValidateStatus = 0;
const char *as_machineVpdVarsToUpdate[] = {"s/vpd/machine", nullptr};

agent_binding_scalar_t machineVpd_decl[] = {
    MACHINE_VPD_VARIABLE(machineLevelVpdMachineType, "s/vpd/machine/typemodel", updateOEMTypeModel),
    MACHINE_VPD_VARIABLE(machineLevelVpdMachineModel, "s/vpd/machine/typemodel", updateOEMTypeModel),
    MACHINE_VPD_VARIABLE(machineLevelSerialNumber, "s/vpd/machine/serialNo", nullptr),
    MACHINE_VPD_VARIABLE(machineLevelUUID, "s/vpd/machine/uuid", nullptr),
    MACHINE_VPD_VARIABLE(machineLevelProductName, "s/vpd/machine/prodName", nullptr),
    {},
};
agent_binding_scalar_t *machineVpd = machineVpd_decl;

} // extern "C"

static const orv3::SettableGroup machineVpdGroup = {
    .name = "machineVpd",
    .handlerName = "machineVpd_handler",
    .records = machineVpd_decl,
    .state = &machineVpdHandlerState,
    .vars = &pmachineVpdVars,
    .validateStatus = &machineVpdVarListValidateStatus,
    .namespaces = as_machineVpdVarsToUpdate,
    .lock = nullptr,
    .read = update_binding_from_TIRO_v2,
};

extern "C" {

int32_t getSingleValueFromTIRO(int32_t transaction, const char *path, char *buffer, int32_t size)
{
    int32_t status = 0;
    GetVarValueSTRING(transaction, g_coHandle, 0, 0, path, &status, buffer, size);
    if (status == 0)
        return 0;
    ORV3_TRACE(kErrorToken, "%s: GETVARVALUE (%s) error %d:%s\n", __func__, path, status,
               quel_dm_GetVarListErrorStr(status));
    switch (status) {
    case 2: return SNMP_ERR_WRONGTYPE;
    case 3: return SNMP_ERR_BADVALUE;
    default: return SNMP_ERR_GENERR;
    }
}

int32_t updateOEMTypeModel(agent_binding_scalar_t *record, int32_t transaction)
{
    char manufacturer[kMaxText] = {};
    int32_t status = getSingleValueFromTIRO(transaction, "s/vpd/machine/productmfg", manufacturer, kMaxText);
    if (status != 0)
        return status;
    char typeModel[kMaxText] = {};
    status = getSingleValueFromTIRO(transaction, "s/vpd/machine/typemodel", typeModel, kMaxText);
    if (status != 0)
        return status;
    // The store terminates what it writes; never read past the buffers if it did not.
    manufacturer[kMaxText - 1] = '\0';
    typeModel[kMaxText - 1] = '\0';

    auto *value = static_cast<char *>(record->mib_value);
    if (strcmp(manufacturer, "TRVX") == 0) {
        // The maker's text is a four-character machine type and the model after it.
        if (strcmp(record->name, "machineLevelVpdMachineType") == 0)
            snprintf(value, 5, "%s", typeModel);
        else
            snprintf(value, record->mib_maxsize, "%s", typeModel + strnlen(typeModel, 4));
    } else if (strcmp(manufacturer, "OEM") == 0) {
        snprintf(value, record->mib_maxsize, "%s", typeModel);
    } else {
        ORV3_TRACE(kErrorToken, "%s: GETVARVALUE (%s) error %d:%s\n", "updateOEMTypeModel", "s/vpd/machine/productmfg",
                   0, "productmfg data is not correct");
        return SNMP_ERR_BADVALUE;
    }
    *record->mib_cursize = static_cast<uint32_t>(strlen(value));
    return 0;
}

int init_machineVpd(void)
{
    for (agent_binding_scalar_t *record = machineVpd_decl; record->name; ++record) {
        if (record->store_type == QUEL_DM_TYPE_STRING) {
            // The working buffer of a text: its maximum size and a terminator.
            record->store_size = record->mib_maxsize + 1;
        }
    }
    orv3::registerSettableGroup(__func__, machineVpdGroup, false, machineVpd_handler);
    return 0;
}

int machineVpd_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests)
{
    return orv3::settableGroupHandler(machineVpdGroup, reqinfo, requests);
}

} // extern "C"
