// Loader of kepVpdTable: binds the store table "s/vpd/firmwaretbl". The
// firmware identifier and its version are served joined in one column.
#include "bound_rows.h"
#include "inventory.h"
#include "text.h"

#include <cstdio>

static quel_dm_binding_t kepVpdTable_binding = nullptr;

extern "C" {

int32_t kepVpdIndex_value;
char kepVpdType_string[256];
char kepVpdIdString_string[256];
char kepVpdVersionString_string[256];
char kepVpdReleaseDate_string[256];
static quel_dm_string_holder_t kepVpdType_holder = {kepVpdType_string, sizeof kepVpdType_string};
static quel_dm_string_holder_t kepVpdIdString_holder = {kepVpdIdString_string, sizeof kepVpdIdString_string};
static quel_dm_string_holder_t kepVpdVersionString_holder = {kepVpdVersionString_string,
                                                             sizeof kepVpdVersionString_string};
static quel_dm_string_holder_t kepVpdReleaseDate_holder = {kepVpdReleaseDate_string, sizeof kepVpdReleaseDate_string};

quel_dm_column_binding_t kepVpdTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &kepVpdIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "type", &kepVpdType_holder},
    {QUEL_DM_TYPE_STRING, 0, "id", &kepVpdIdString_holder},
    {QUEL_DM_TYPE_STRING, 0, "version", &kepVpdVersionString_holder},
    {QUEL_DM_TYPE_STRING, 0, "releaseDate", &kepVpdReleaseDate_holder},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_kepVpdTable_entry(kepVpdTable_entry_t *row)
{
    row->head.index = kepVpdIndex_value;
    row->type.len = orv3::copyText(row->type.text, 256, kepVpdType_string, sizeof kepVpdType_string);
    row->id_version.len =
        orv3::joinTexts(row->id_version.text, 256, kepVpdIdString_string, sizeof kepVpdIdString_string,
                        kepVpdVersionString_string, sizeof kepVpdVersionString_string);
    row->release_date.len =
        orv3::copyText(row->release_date.text, 256, kepVpdReleaseDate_string, sizeof kepVpdReleaseDate_string);
    return 0;
}

} // extern "C"

static const orv3::BoundTableSource kepVpdTableSource = {
    .ns = "s/vpd/firmwaretbl",
    .columns = kepVpdTable_columns,
    .binding = &kepVpdTable_binding,
    .loaderName = "initialize_kepVpdTable_local",
    .firstRowMessageWithResult = true,
    .token = "kepVpdTable",
    .traceRowsLoaded = true,
};
ORV3_BOUND_TABLE_LOADER(kepVpdTable, kepVpdTableSource)
