// Loader of systemMemoryVpdTable: binds the store table "s/hw_health/memory";
// texts are copied with a bound of 31 (at most 30 characters).
#include "bound_rows.h"
#include "inventory.h"
#include "text.h"

static quel_dm_binding_t systemMemoryVpdTable_binding = nullptr;

extern "C" {

int32_t memoryVpdIndex_value;
char memoryVpdDescription_string[256];
char memoryVpdPartNumber_string[256];
char memoryVpdFRUSerialNumber_string[256];
char memoryVpdManufactureDate_string[256];
char memoryVpdType_string[256];
int32_t memoryVpdSize_value;
char memoryHealthStatus_string[256];
int32_t memoryConfigSpeed_value;
int32_t memoryRatedSpeed_value;
int32_t memoryAEPFlag_value;
char memoryTarvexPartNumber_string[256];
static quel_dm_string_holder_t descriptionHolder = {memoryVpdDescription_string, 256};
static quel_dm_string_holder_t partNumberHolder = {memoryVpdPartNumber_string, 256};
static quel_dm_string_holder_t serialNumberHolder = {memoryVpdFRUSerialNumber_string, 256};
static quel_dm_string_holder_t manufactureDateHolder = {memoryVpdManufactureDate_string, 256};
static quel_dm_string_holder_t typeHolder = {memoryVpdType_string, 256};
static quel_dm_string_holder_t healthStatusHolder = {memoryHealthStatus_string, 256};
static quel_dm_string_holder_t udiPartNumberHolder = {memoryTarvexPartNumber_string, 256};

quel_dm_column_binding_t systemMemoryVpdTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &memoryVpdIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "description", &descriptionHolder},
    {QUEL_DM_TYPE_STRING, 0, "part_number", &partNumberHolder},
    {QUEL_DM_TYPE_STRING, 0, "serial_number", &serialNumberHolder},
    {QUEL_DM_TYPE_STRING, 0, "manuf_date", &manufactureDateHolder},
    {QUEL_DM_TYPE_STRING, 0, "type", &typeHolder},
    {QUEL_DM_TYPE_INT, 0, "capacity", &memoryVpdSize_value},
    {QUEL_DM_TYPE_STRING, 0, "status", &healthStatusHolder},
    {QUEL_DM_TYPE_INT, 0, "config_speed", &memoryConfigSpeed_value},
    {QUEL_DM_TYPE_INT, 0, "mem_speed", &memoryRatedSpeed_value},
    {QUEL_DM_TYPE_INT, 0, "aep_flag", &memoryAEPFlag_value},
    {QUEL_DM_TYPE_STRING, 0, "udi_part_number", &udiPartNumberHolder},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_systemMemoryVpdTable_entry(systemMemoryVpdTable_entry_t *row)
{
    auto copy = [](orv3_text32_t &field, const char *holder) {
        field.len = orv3::copyText(field.text, 31, holder, 256);
    };
    row->head.index = memoryVpdIndex_value;
    copy(row->description, memoryVpdDescription_string);
    copy(row->part_number, memoryVpdPartNumber_string);
    copy(row->serial_number, memoryVpdFRUSerialNumber_string);
    copy(row->manufacture_date, memoryVpdManufactureDate_string);
    copy(row->type, memoryVpdType_string);
    row->size = memoryVpdSize_value;
    copy(row->health_status, memoryHealthStatus_string);
    row->config_speed = memoryConfigSpeed_value;
    row->rated_speed = memoryRatedSpeed_value;
    row->aep_flag = memoryAEPFlag_value;
    copy(row->udi_part_number, memoryTarvexPartNumber_string);
    return 0;
}

} // extern "C"

static const orv3::BoundTableSource systemMemoryVpdTableSource = {
    .ns = "s/hw_health/memory",
    .columns = systemMemoryVpdTable_columns,
    .binding = &systemMemoryVpdTable_binding,
    .loaderName = "initialize_systemMemoryVpdTable_local",
    .firstRowMessageWithResult = true,
};
ORV3_BOUND_TABLE_LOADER(systemMemoryVpdTable, systemMemoryVpdTableSource)
