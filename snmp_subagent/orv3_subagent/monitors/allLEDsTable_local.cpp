// Loader of allLEDsTable: binds "s/lightpathstatus/status/lightpathstatustbl";
// the label and colour are copied with a bound of 256 (at most 255 characters).
#include "bound_rows.h"
#include "leds.h"
#include "text.h"
#include "trace.h"

static const char kLedStoreTable[] = "s/lightpathstatus/status/lightpathstatustbl";
static quel_dm_binding_t allLEDsTable_binding = nullptr;

extern "C" {

int32_t ledIndex_value;
int32_t ledIdentifier_value;
char ledLabel_string[256];
quel_dm_string_holder_t ledLabel_value = {ledLabel_string, sizeof ledLabel_string};
int32_t ledState_value;
char ledColor_string[256];
quel_dm_string_holder_t ledColor_value = {ledColor_string, sizeof ledColor_string};

quel_dm_column_binding_t allLEDsTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &ledIndex_value},    {QUEL_DM_TYPE_INT, 0, "ledid", &ledIdentifier_value},
    {QUEL_DM_TYPE_STRING, 0, "descr", &ledLabel_value}, {QUEL_DM_TYPE_INT, 0, "status", &ledState_value},
    {QUEL_DM_TYPE_STRING, 0, "color", &ledColor_value}, {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_allLEDsTable_entry(allLEDsTable_entry_t *row)
{
    row->head.index = ledIndex_value;
    row->identifier = ledIdentifier_value;
    row->label_len = orv3::copyText(row->label, sizeof row->label, ledLabel_string, sizeof ledLabel_string);
    row->state = ledState_value;
    row->color_len = orv3::copyText(row->color, sizeof row->color, ledColor_string, sizeof ledColor_string);
    return 0;
}

int initialize_allLEDsTable_local(void)
{
    static const orv3::BoundTableSource source = {
        .ns = kLedStoreTable,
        .columns = allLEDsTable_columns,
        .binding = &allLEDsTable_binding,
        .loaderName = "initialize_allLEDsTable_local",
        .firstRowMessageWithResult = true,
        .token = "allLEDsTable",
        .traceEnter = false,
        .traceRowsLoaded = true,
    };
    orv3::loadBoundRows(source, allLEDsTable_clear, ORV3_BOUND_ROW_ADDER(allLEDsTable));
    return 0;
}

} // extern "C"
