#include "platform_variant.h"

#include "trace.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <strings.h>

namespace orv3 {

bool isFamilyWithoutPower()
{
    const char *family = getenv("ORV_FAMILY");
    if (!family)
        return false;
    for (const char *unsupported : {"sorvinel", "tamberlow", "plintaber"})
        if (strcmp(family, unsupported) == 0)
            return true;
    return false;
}

bool familyWithoutPower(const char *routine, const char *token, std::source_location where)
{
    if (!isFamilyWithoutPower())
        return false;
    ORV3_TRACE_AT(routine, where, token, "%s: sorvinel or tamberlow or plintaber server not be currently supported.\n",
                  routine);
    return true;
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
