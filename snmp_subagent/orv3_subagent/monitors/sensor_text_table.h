// The row shape shared by voltTable and tempTable: the index and ten texts,
// every reading and threshold exactly as the store formats it.
#pragma once

#include "row_table.h"

#include "bound_rows.h"

#include "orv3/data_manager.h"

#include <cstdint>
#include <source_location>

extern "C" {

typedef struct sensor_text_entry {
    orv3_row_head_t head;
    orv3_text32_t descr;
    orv3_text32_t reading;
    orv3_text32_t nominal_reading;
    orv3_text32_t non_recov_limit_high;
    orv3_text32_t crit_limit_high;
    orv3_text32_t non_crit_limit_high;
    orv3_text32_t non_recov_limit_low;
    orv3_text32_t crit_limit_low;
    orv3_text32_t non_crit_limit_low;
    orv3_text32_t health_status;
} sensor_text_entry_t;

} // extern "C"

namespace orv3 {

// The ten text fields in column order (columns 2 to 11).
inline constexpr orv3_text32_t sensor_text_entry_t::*kSensorTexts[] = {
    &sensor_text_entry_t::descr,
    &sensor_text_entry_t::reading,
    &sensor_text_entry_t::nominal_reading,
    &sensor_text_entry_t::non_recov_limit_high,
    &sensor_text_entry_t::crit_limit_high,
    &sensor_text_entry_t::non_crit_limit_high,
    &sensor_text_entry_t::non_recov_limit_low,
    &sensor_text_entry_t::crit_limit_low,
    &sensor_text_entry_t::non_crit_limit_low,
    &sensor_text_entry_t::health_status,
};

// Columns 1 to 11 of both tables.
inline constexpr Column kSensorTextColumns[] = {
    ORV3_INTEGER_COLUMN(1, sensor_text_entry_t, head.index),
    ORV3_TEXT32_COLUMN(2, sensor_text_entry_t, descr),
    ORV3_TEXT32_COLUMN(3, sensor_text_entry_t, reading),
    ORV3_TEXT32_COLUMN(4, sensor_text_entry_t, nominal_reading),
    ORV3_TEXT32_COLUMN(5, sensor_text_entry_t, non_recov_limit_high),
    ORV3_TEXT32_COLUMN(6, sensor_text_entry_t, crit_limit_high),
    ORV3_TEXT32_COLUMN(7, sensor_text_entry_t, non_crit_limit_high),
    ORV3_TEXT32_COLUMN(8, sensor_text_entry_t, non_recov_limit_low),
    ORV3_TEXT32_COLUMN(9, sensor_text_entry_t, crit_limit_low),
    ORV3_TEXT32_COLUMN(10, sensor_text_entry_t, non_crit_limit_low),
    ORV3_TEXT32_COLUMN(11, sensor_text_entry_t, health_status),
};

// The store table of voltTable or tempTable: where the rows come from, how
// far each text is copied, and the holders of the index and the ten texts.
struct SensorStore {
    BoundTableSource source;
    size_t textBound; // each text keeps textBound - 1 characters at most
    const int32_t *index;
    const quel_dm_string_holder_t *holders[10]; // in column order
};

// Copies the holders of the current store row into a row.
void copySensorRow(const SensorStore &store, sensor_text_entry_t *row);

// The row count of the store table: a failed call prints its status and
// gives the negated status word.
int32_t sensorTableRowCount(const char *routine, const SensorStore &store,
                            std::source_location where = std::source_location::current());

// The commit routine of voltTable and tempTable: records the request on a
// row while the group holds an updatable list; it writes nothing.
int sensorTableCommitRow(const char *routine, const char *token, const char *rowPathFormat, quel_dm_varlist_t vars,
                         int requestId, sensor_text_entry_t *row,
                         std::source_location where = std::source_location::current());

} // namespace orv3
