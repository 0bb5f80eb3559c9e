// Loader of systemCPUVpdTable: binds the store table "s/hw_health/processors".
// The store keeps every number of a processor as text; speed, voltage and
// data width are read as decimals in thousandths ("2.10" is 2100), cores
// and threads as plain integers.
#include "bound_rows.h"
#include "inventory.h"
#include "text.h"

#include <cstdlib>

static quel_dm_binding_t systemCPUVpdTable_binding = nullptr;

namespace {

constexpr size_t kHolderSize = 256;

// A decimal text's value: its integer part alone when it has no point, else
// in thousandths, the fraction cut to three digits. So "2.4" is 2400 but
// "2400" is 2400 and "3" is 3, not 3000: the store gives a few numbers in
// whole units and most with a point, and each is served as it comes.
uint32_t parseDecimal(const char *text)
{
    uint32_t integer = 0, fraction = 0;
    int fractionDigits = 0;
    bool point = false;
    for (const char *at = text; *at; ++at) {
        if (*at >= '0' && *at <= '9') {
            if (!point) {
                integer = integer * 10u + static_cast<uint32_t>(*at - '0');
                continue;
            }
            if (fractionDigits == 3)
                break;
            fraction = fraction * 10u + static_cast<uint32_t>(*at - '0');
            ++fractionDigits;
        } else if (*at == '.') {
            if (point && fractionDigits == 3)
                break;
            point = true; // a later point changes nothing
        } else {
            break;
        }
    }
    if (!point)
        return integer;
    for (; fractionDigits < 3; ++fractionDigits)
        fraction *= 10u;
    return integer * 1000u + fraction; // wraps as the controller's word does
}

int32_t leadingInteger(const char *text)
{
    return text ? static_cast<int32_t>(strtol(text, nullptr, 10)) : 0;
}

} // namespace

extern "C" {

int32_t cpuVpdIndex_value;
char cpuVpdDescription_string[kHolderSize];
char cpuVpdSpeed_string[kHolderSize];
char cpuVpdIdentifier_string[kHolderSize];
char cpuVpdType_string[kHolderSize];
char cpuVpdCpuModel_string[kHolderSize];
char cpuVpdFamily_string[kHolderSize];
char cpuVpdCores_string[kHolderSize];
char cpuVpdThreads_string[kHolderSize];
char cpuVpdVoltage_string[kHolderSize];
char cpuVpdDataWidth_string[kHolderSize];
char cpuVpdHealthStatus_string[kHolderSize];
static quel_dm_string_holder_t descriptionHolder = {cpuVpdDescription_string, kHolderSize};
static quel_dm_string_holder_t speedHolder = {cpuVpdSpeed_string, kHolderSize};
static quel_dm_string_holder_t identifierHolder = {cpuVpdIdentifier_string, kHolderSize};
static quel_dm_string_holder_t typeHolder = {cpuVpdType_string, kHolderSize};
static quel_dm_string_holder_t modelHolder = {cpuVpdCpuModel_string, kHolderSize};
static quel_dm_string_holder_t familyHolder = {cpuVpdFamily_string, kHolderSize};
static quel_dm_string_holder_t coresHolder = {cpuVpdCores_string, kHolderSize};
static quel_dm_string_holder_t threadsHolder = {cpuVpdThreads_string, kHolderSize};
static quel_dm_string_holder_t voltageHolder = {cpuVpdVoltage_string, kHolderSize};
static quel_dm_string_holder_t dataWidthHolder = {cpuVpdDataWidth_string, kHolderSize};
static quel_dm_string_holder_t healthStatusHolder = {cpuVpdHealthStatus_string, kHolderSize};

quel_dm_column_binding_t systemCPUVpdTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &cpuVpdIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "fru_name", &descriptionHolder},
    {QUEL_DM_TYPE_STRING, 0, "clock_speed", &speedHolder},
    {QUEL_DM_TYPE_STRING, 0, "part_id", &identifierHolder},
    {QUEL_DM_TYPE_STRING, 0, "cpu_type", &typeHolder},
    {QUEL_DM_TYPE_STRING, 0, "cpu_model", &modelHolder},
    {QUEL_DM_TYPE_STRING, 0, "family", &familyHolder},
    {QUEL_DM_TYPE_STRING, 0, "cores", &coresHolder},
    {QUEL_DM_TYPE_STRING, 0, "threads", &threadsHolder},
    {QUEL_DM_TYPE_STRING, 0, "voltage", &voltageHolder},
    {QUEL_DM_TYPE_STRING, 0, "max_data_width", &dataWidthHolder},
    {QUEL_DM_TYPE_STRING, 0, "status", &healthStatusHolder},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

uint32_t cpuVpdDecimal_parse(const char *text)
{
    return text ? parseDecimal(text) : 0;
}

// Each conversion stores its column only when bit 0 of `flags` is set.
int cpuVpdSpeed_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text)
{
    if (flags & 1)
        row->speed = static_cast<int32_t>(cpuVpdDecimal_parse(text));
    return 0;
}

int cpuVpdVoltage_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text)
{
    if (flags & 1)
        row->voltage = static_cast<int32_t>(cpuVpdDecimal_parse(text));
    return 0;
}

int cpuVpdDataWidth_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text)
{
    if (flags & 1)
        row->data_width = static_cast<int32_t>(cpuVpdDecimal_parse(text));
    return 0;
}

int cpuVpdCores_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text)
{
    if (flags & 1)
        row->cores = leadingInteger(text);
    return 0;
}

int cpuVpdThreads_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text)
{
    if (flags & 1)
        row->threads = leadingInteger(text);
    return 0;
}

int copy_bindings_to_systemCPUVpdTable_entry(systemCPUVpdTable_entry_t *row)
{
    // The conversions read the holders as C strings: end each within itself.
    for (char *holder :
         {cpuVpdSpeed_string, cpuVpdCores_string, cpuVpdThreads_string, cpuVpdVoltage_string, cpuVpdDataWidth_string})
        holder[kHolderSize - 1] = '\0';
    row->head.index = cpuVpdIndex_value;
    row->description.len = orv3::copyText(row->description.text, 31, cpuVpdDescription_string, kHolderSize);
    cpuVpdSpeed_conv(1, row, cpuVpdSpeed_string);
    row->identifier.len = orv3::copyText(row->identifier.text, 31, cpuVpdIdentifier_string, kHolderSize);
    row->type.len = orv3::copyText(row->type.text, 31, cpuVpdType_string, kHolderSize);
    // Family and model both keep 63 characters.
    row->family.len = orv3::copyText(row->family.text, 64, cpuVpdFamily_string, kHolderSize);
    cpuVpdCores_conv(1, row, cpuVpdCores_string);
    cpuVpdThreads_conv(1, row, cpuVpdThreads_string);
    cpuVpdVoltage_conv(1, row, cpuVpdVoltage_string);
    cpuVpdDataWidth_conv(1, row, cpuVpdDataWidth_string);
    row->health_status.len = orv3::copyText(row->health_status.text, 31, cpuVpdHealthStatus_string, kHolderSize);
    row->model.len = orv3::copyText(row->model.text, 64, cpuVpdCpuModel_string, kHolderSize);
    return 0;
}

} // extern "C"

static const orv3::BoundTableSource systemCPUVpdTableSource = {
    .ns = "s/hw_health/processors",
    .columns = systemCPUVpdTable_columns,
    .binding = &systemCPUVpdTable_binding,
    .loaderName = "initialize_systemCPUVpdTable_local",
    .firstRowMessageWithResult = true,
};
ORV3_BOUND_TABLE_LOADER(systemCPUVpdTable, systemCPUVpdTableSource)
