// Loader of hostMACAddressTable: binds the store table "s/vpd/nictbl"; both
// texts are kept to 255 characters.
#include "bound_rows.h"
#include "inventory.h"
#include "text.h"

static quel_dm_binding_t hostMACAddressTable_binding = nullptr;

extern "C" {

int32_t hostMACAddressIndex_value;
char hostMACAddressDescription_string[256];
char hostMACAddress_string[256];
static quel_dm_string_holder_t descriptionHolder = {hostMACAddressDescription_string, 256};
static quel_dm_string_holder_t addressHolder = {hostMACAddress_string, 256};

quel_dm_column_binding_t hostMACAddressTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &hostMACAddressIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "name", &descriptionHolder},
    {QUEL_DM_TYPE_STRING, 0, "macAddr", &addressHolder},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_hostMACAddressTable_entry(hostMACAddressTable_entry_t *row)
{
    row->head.index = hostMACAddressIndex_value;
    row->description.len = orv3::copyText(row->description.text, 256, hostMACAddressDescription_string, 256);
    row->address.len = orv3::copyText(row->address.text, 256, hostMACAddress_string, 256);
    return 0;
}

} // extern "C"

static const orv3::BoundTableSource hostMACAddressTableSource = {
    .ns = "s/vpd/nictbl",
    .columns = hostMACAddressTable_columns,
    .binding = &hostMACAddressTable_binding,
    .loaderName = "initialize_hostMACAddressTable_local",
    .firstRowMessageWithResult = true,
};
ORV3_BOUND_TABLE_LOADER(hostMACAddressTable, hostMACAddressTableSource)
