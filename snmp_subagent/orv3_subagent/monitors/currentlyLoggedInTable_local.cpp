// Loader of currentlyLoggedInTable: asks the session manager for up to 256
// session ids and describes each one. A session that can no longer be
// described (it has ended) is skipped without leaving a gap: the index
// counts the sessions described. Names and access texts are cut to 64
// characters.
#include "currentlyLoggedInTable.h"
#include "trace.h"

#include "orv3/session_manager.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

static const char kToken[] = "currentlyLoggedInTable";
static constexpr int32_t kSessionCapacity = 256;
static constexpr size_t kTextBound = 64;

// The id array of a load whose session query failed is not released on
// that path; the next load takes it up again instead of allocating anew.
static int32_t *unreleasedIds = nullptr;

namespace {

uint32_t copySessionText(char *dst, const char *src, size_t field)
{
    size_t length = strnlen(src, field);
    if (length > kTextBound)
        length = kTextBound;
    memcpy(dst, src, length);
    dst[length] = '\0';
    return static_cast<uint32_t>(length);
}

} // namespace

extern "C" int initialize_currentlyLoggedInTable_local(void)
{
    ORV3_TRACE(kToken, "%s enter\n", __func__);
    currentlyLoggedInTable_clear();

    int32_t count = kSessionCapacity;
    ORV3_TRACE(kToken, "iCount = %d\n", count);
    int32_t *ids = unreleasedIds ? unreleasedIds : static_cast<int32_t *>(calloc(kSessionCapacity, sizeof *ids));
    unreleasedIds = nullptr;
    if (!ids) {
        printf("%s: malloc_zero() failed!\n", __func__);
        return 0;
    }
    memset(ids, 0, kSessionCapacity * sizeof *ids);

    uint32_t selector = 0;
    int32_t result = sm_session_get_type_info(&selector, &count, ids);
    if (result != 0) {
        printf("%s: sm_session_get_type_info() failed! (%d)\n", __func__, result);
        unreleasedIds = ids;
        return 0;
    }
    // Never more ids than the array holds, whatever the count says.
    if (count > kSessionCapacity)
        count = kSessionCapacity;

    ORV3_TRACE(kToken, "%d loops\n", count);
    long described = 0;
    for (int32_t i = 0; i < count; ++i) {
        ORV3_TRACE(kToken, "session ID = %d\n", ids[i]);
        session_manager_info_t info;
        memset(&info, 0, sizeof info);
        if (sm_session_get_info(ids[i], &info) == 0)
            continue;
        ++described;
        currentlyLoggedInTable_entry_t *row = currentlyLoggedInTable_createEntry(ids);
        if (!row)
            continue;
        row->head.index = static_cast<int32_t>(described);
        row->user_name_len = copySessionText(row->user_name, info.user_name, sizeof info.user_name);
        row->access_method_len = copySessionText(row->access_method, info.access, sizeof info.access);
        currentlyLoggedInTable_insertEntry(row);
        ORV3_TRACE(kToken, "%ld) user %s by %s, IP %.*s\n", described, row->user_name, row->access_method,
                   static_cast<int>(strnlen(info.ip_address, sizeof info.ip_address)), info.ip_address);
    }
    ORV3_TRACE(kToken, "%s freeing memory 0x%x\n", __func__, static_cast<unsigned>(reinterpret_cast<uintptr_t>(ids)));
    free(ids);
    return 0;
}
