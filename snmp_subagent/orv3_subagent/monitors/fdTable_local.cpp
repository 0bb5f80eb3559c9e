// Loader of fdTable: binds the store table "s/hw_health/flashdimms"; texts
// are copied with a bound of 31 (at most 30 characters), the capacity as
// "<n> GB" and the warranty and endurance figures as "<n>%".
#include "bound_rows.h"
#include "hw_health_tables.h"
#include "text.h"

#include <cstdio>

static const char kFlashDimmStoreTable[] = "s/hw_health/flashdimms";
static quel_dm_binding_t fdTable_binding = nullptr;

namespace {

// The store's string columns, each with its 31-byte holder.
struct StringHolder {
    char text[31];
    quel_dm_string_holder_t holder;
};

#define ORV3_FDIMM_STRING(name) StringHolder name = {{}, {name.text, sizeof name.text}}
ORV3_FDIMM_STRING(szFDimmName);
ORV3_FDIMM_STRING(szFDimmHealthStatus);
ORV3_FDIMM_STRING(szFDimmOpStatus);
ORV3_FDIMM_STRING(szFDimmTemperature);
ORV3_FDIMM_STRING(szFDimmMT);
ORV3_FDIMM_STRING(szFDimmFwlevel);
ORV3_FDIMM_STRING(szFDimmPN);
ORV3_FDIMM_STRING(szFDimmSN);
ORV3_FDIMM_STRING(szFDimmManuf);

int32_t fdimmIndex_value;
int32_t fdimmCapacity_value;
int32_t fdimmWarrantyLife_value;
int32_t fdimmEnduranceLife_value;

uint32_t copyHeld(orv3_text32_t &column, const StringHolder &held)
{
    column.len = orv3::copyText(column.text, 31, held.text, sizeof held.text);
    return column.len;
}

// "%ld" formats of the store's integers, bounded like the copied texts.
void formatHeld(orv3_text32_t &column, const char *format, int32_t value)
{
    char text[31];
    snprintf(text, sizeof text, format, static_cast<long>(value));
    column.len = orv3::copyText(column.text, 31, text, sizeof text);
}

} // namespace

extern "C" {

int32_t gFDimmTableLastRowCount = 0;

quel_dm_column_binding_t myfdimm_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &fdimmIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "name", &szFDimmName.holder},
    {QUEL_DM_TYPE_STRING, 0, "status", &szFDimmHealthStatus.holder},
    {QUEL_DM_TYPE_STRING, 0, "op_status", &szFDimmOpStatus.holder},
    {QUEL_DM_TYPE_STRING, 0, "temperature", &szFDimmTemperature.holder},
    {QUEL_DM_TYPE_INT, 0, "capacity", &fdimmCapacity_value},
    {QUEL_DM_TYPE_INT, 0, "warranty_write", &fdimmWarrantyLife_value},
    {QUEL_DM_TYPE_INT, 0, "endurance_write", &fdimmEnduranceLife_value},
    {QUEL_DM_TYPE_STRING, 0, "model_type", &szFDimmMT.holder},
    {QUEL_DM_TYPE_STRING, 0, "fw_level", &szFDimmFwlevel.holder},
    {QUEL_DM_TYPE_STRING, 0, "part_number", &szFDimmPN.holder},
    {QUEL_DM_TYPE_STRING, 0, "serial_number", &szFDimmSN.holder},
    {QUEL_DM_TYPE_STRING, 0, "manuf_id", &szFDimmManuf.holder},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_fdTable_entry(fdTable_entry_t *row)
{
    row->head.index = fdimmIndex_value;
    copyHeld(row->name, szFDimmName);
    copyHeld(row->health_status, szFDimmHealthStatus);
    copyHeld(row->op_status, szFDimmOpStatus);
    formatHeld(row->capacity, "%ld GB", fdimmCapacity_value);
    copyHeld(row->model_type, szFDimmMT);
    copyHeld(row->part_number, szFDimmPN);
    copyHeld(row->serial_number, szFDimmSN);
    copyHeld(row->manufacturer, szFDimmManuf);
    copyHeld(row->temperature, szFDimmTemperature);
    formatHeld(row->warranty_life, "%ld%%", fdimmWarrantyLife_value);
    formatHeld(row->endurance_life, "%ld%%", fdimmEnduranceLife_value);
    copyHeld(row->firmware_level, szFDimmFwlevel);
    return 0;
}

int initialize_fdTable_local(void)
{
    static const orv3::BoundTableSource source = {kFlashDimmStoreTable, myfdimm_columns, &fdTable_binding,
                                                  "initialize_fdTable_local", false};
    gFDimmTableLastRowCount = orv3::loadBoundRows(source, fdTable_clear, ORV3_BOUND_ROW_ADDER(fdTable));
    return 0;
}

int32_t fdTable_get_row_count(void)
{
    return orv3::hwHealthRowCount(__func__, "fdTable", kFlashDimmStoreTable, gFDimmTableLastRowCount,
                                  "gFDimmTableLastRowCount");
}

} // extern "C"
