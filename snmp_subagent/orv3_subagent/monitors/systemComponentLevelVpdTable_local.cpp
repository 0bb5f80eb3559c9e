// Loader of systemComponentLevelVpdTable: binds the store table
// "s/vpd/componenttbl"; every text is kept to 255 characters.
#include "bound_rows.h"
#include "inventory.h"
#include "text.h"

static quel_dm_binding_t systemComponentLevelVpdTable_binding = nullptr;

extern "C" {

int32_t componentLevelVpdIndex_value;
char componentLevelVpdFruNumber_string[256];
char componentLevelVpdFruName_string[256];
char componentLevelVpdSerialNumber_string[256];
char componentLevelVpdManufacturingId_string[256];
static quel_dm_string_holder_t fruNumberHolder = {componentLevelVpdFruNumber_string, 256};
static quel_dm_string_holder_t fruNameHolder = {componentLevelVpdFruName_string, 256};
static quel_dm_string_holder_t serialNumberHolder = {componentLevelVpdSerialNumber_string, 256};
static quel_dm_string_holder_t manufacturingIdHolder = {componentLevelVpdManufacturingId_string, 256};

quel_dm_column_binding_t systemComponentLevelVpdTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &componentLevelVpdIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "fruNo", &fruNumberHolder},
    {QUEL_DM_TYPE_STRING, 0, "fruName", &fruNameHolder},
    {QUEL_DM_TYPE_STRING, 0, "serialNo", &serialNumberHolder},
    {QUEL_DM_TYPE_STRING, 0, "mfgId", &manufacturingIdHolder},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_systemComponentLevelVpdTable_entry(systemComponentLevelVpdTable_entry_t *row)
{
    row->head.index = componentLevelVpdIndex_value;
    row->fru_number.len = orv3::copyText(row->fru_number.text, 256, componentLevelVpdFruNumber_string, 256);
    row->fru_name.len = orv3::copyText(row->fru_name.text, 256, componentLevelVpdFruName_string, 256);
    row->serial_number.len = orv3::copyText(row->serial_number.text, 256, componentLevelVpdSerialNumber_string, 256);
    row->manufacturing_id.len =
        orv3::copyText(row->manufacturing_id.text, 256, componentLevelVpdManufacturingId_string, 256);
    return 0;
}

} // extern "C"

static const orv3::BoundTableSource systemComponentLevelVpdTableSource = {
    .ns = "s/vpd/componenttbl",
    .columns = systemComponentLevelVpdTable_columns,
    .binding = &systemComponentLevelVpdTable_binding,
    .loaderName = "initialize_systemComponentLevelVpdTable_local",
    .firstRowMessageWithResult = true,
};
ORV3_BOUND_TABLE_LOADER(systemComponentLevelVpdTable, systemComponentLevelVpdTableSource)
