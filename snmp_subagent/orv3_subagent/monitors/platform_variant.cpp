#include "platform_variant.h"

#include "trace.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <strings.h>

namespace orv3 {

bool familyWithoutPower(const char *routine, const char *token, std::source_location where)
{
    const char *family = getenv("ORV_FAMILY");
    if (!family)
        return false;
    for (const char *unsupported : {"sorvinel", "tamberlow", "plintaber"}) {
        if (strcmp(family, unsupported) == 0) {
            ORV3_TRACE_AT(routine, where, token,
                          "%s: sorvinel or tamberlow or plintaber server not be currently supported.\n", routine);
            return true;
        }
    }
    return false;
}

bool platformFlagSet(unsigned long mask)
{
    const char *flags = getenv("PLATFLAGS");
    return flags && (strtoul(flags, nullptr, 16) & mask) != 0;
}

bool codenameStartsWith(const char *prefix)
{
    const char *codename = getenv("ORV_CODENAME");
    return codename && strncasecmp(codename, prefix, strlen(prefix)) == 0;
}

} // namespace orv3
