/*
 * Zero-work reference tables for the walk-cost benchmark: net-snmp
 * table-iterator tables whose cells are filled once from memory, loaded into
 * the same snmpd as the module so that the module's cost per varbind can be
 * read against the least a table-iterator table can cost.
 *
 * ORV3_REFERENCE_TABLES describes the tables, one per ';'-separated item
 * "<rows>:<columns>", the columns a ','-separated list of kinds: "i"
 * (INTEGER), "u" (Gauge32) or "s<N>" (an OCTET STRING of N bytes). Column 1
 * answers the row's index. Item k is registered at
 * 1.3.6.1.4.1.53917.99.1.1.k.2, rows in ascending index order and with the
 * iterator's sorted hint, as the module registers its tables (as many arcs
 * as most of the module's tables have, so that their OIDs cost the same to
 * handle).
 *
 * A walk's last request runs past the table into whatever follows it. So
 * that this costs the same after every table measured, a guard table (one
 * INTEGER column, 25 rows, sorted) follows each: at ...k.2.2 after the
 * reference table (walked from its entry, ...k.2.1), and at each OID that
 * ORV3_REFERENCE_GUARDS lists (','-separated, numeric) after tables of other
 * modules.
 *
 * Loaded with "dlmod orv3_reference_tables <path>".
 */
// net-snmp's configuration header must come first.
// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
// clang-format on

#include <stdlib.h>
#include <string.h>

#define MAX_COLUMNS 64
#define MAX_TEXT 1024

struct reference_column {
    u_char type;
    size_t length; /* text columns */
};

struct reference_table {
    int rows;
    int columns;
    struct reference_column column[MAX_COLUMNS];
};

struct reference_row {
    long index;
    struct reference_row *next;
};

static char text_cells[MAX_TEXT];

static int parse_table(const char *item, struct reference_table *table)
{
    char *end;
    table->rows = (int)strtol(item, &end, 10);
    if (*end != ':' || table->rows < 0)
        return -1;
    table->columns = 0;
    for (const char *kind = end + 1; *kind && *kind != ';';) {
        struct reference_column *column;
        if (table->columns == MAX_COLUMNS)
            return -1;
        column = &table->column[table->columns++];
        if (*kind == 'i') {
            column->type = ASN_INTEGER;
            ++kind;
        } else if (*kind == 'u') {
            column->type = ASN_GAUGE;
            ++kind;
        } else if (*kind == 's') {
            column->type = ASN_OCTET_STR;
            column->length = (size_t)strtoul(kind + 1, &end, 10);
            if (end == kind + 1 || column->length > MAX_TEXT)
                return -1;
            kind = end;
        } else {
            return -1;
        }
        if (*kind == ',')
            ++kind;
    }
    return table->columns > 0 ? 0 : -1;
}

static netsnmp_variable_list *get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,
                                                  netsnmp_iterator_info *info)
{
    struct reference_row *row = (struct reference_row *)*loop;
    (void)info;
    if (!row)
        return NULL;
    snmp_set_var_typed_integer(index, ASN_INTEGER, row->index);
    *data = row;
    *loop = row->next;
    return index;
}

static netsnmp_variable_list *get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,
                                                   netsnmp_iterator_info *info)
{
    *loop = info->myvoid;
    return get_next_data_point(loop, data, index, info);
}

static int handler(netsnmp_mib_handler *mib_handler, netsnmp_handler_registration *registration,
                   netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests)
{
    const struct reference_table *table = (const struct reference_table *)mib_handler->myvoid;
    netsnmp_request_info *request;
    (void)registration;
    if (reqinfo->mode != MODE_GET)
        return SNMP_ERR_NOERROR;
    for (request = requests; request; request = request->next) {
        const struct reference_row *row;
        netsnmp_table_request_info *info;
        const struct reference_column *column;
        if (request->processed)
            continue;
        row = (const struct reference_row *)netsnmp_extract_iterator_context(request);
        info = netsnmp_extract_table_info(request);
        if (!row || !info || info->colnum < 1 || info->colnum > (unsigned)table->columns) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHINSTANCE);
            continue;
        }
        column = &table->column[info->colnum - 1];
        if (column->type == ASN_OCTET_STR)
            snmp_set_var_typed_value(request->requestvb, ASN_OCTET_STR, text_cells, column->length);
        else
            snmp_set_var_typed_integer(request->requestvb, column->type,
                                       info->colnum == 1 ? row->index : row->index * (long)info->colnum);
    }
    return SNMP_ERR_NOERROR;
}

static void register_table(const struct reference_table *table, const oid *root, size_t root_length, int sorted)
{
    struct reference_row *rows = NULL;
    netsnmp_handler_registration *registration;
    netsnmp_table_registration_info *table_info;
    netsnmp_iterator_info *iterator_info;
    int row;

    for (row = table->rows; row >= 1; --row) {
        struct reference_row *entry = calloc(1, sizeof *entry);
        entry->index = row;
        entry->next = rows;
        rows = entry;
    }
    registration =
        netsnmp_create_handler_registration("orv3ReferenceTable", handler, root, root_length, HANDLER_CAN_RONLY);
    registration->handler->myvoid = (void *)table;
    table_info = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    netsnmp_table_helper_add_indexes(table_info, ASN_INTEGER, 0);
    table_info->min_column = 1;
    table_info->max_column = (unsigned)table->columns;
    iterator_info = SNMP_MALLOC_TYPEDEF(netsnmp_iterator_info);
    iterator_info->get_first_data_point = get_first_data_point;
    iterator_info->get_next_data_point = get_next_data_point;
    iterator_info->table_reginfo = table_info;
    iterator_info->myvoid = rows;
    if (sorted)
        iterator_info->flags |= NETSNMP_ITERATOR_FLAG_SORTED;
    netsnmp_register_table_iterator(registration, iterator_info);
}

static const struct reference_table guard = {25, 1, {{ASN_INTEGER, 0}}};

static void register_guard(const oid *root, size_t root_length)
{
    register_table(&guard, root, root_length, 1);
}

void init_orv3_reference_tables(void)
{
    const char *tables = getenv("ORV3_REFERENCE_TABLES");
    const char *guards = getenv("ORV3_REFERENCE_GUARDS");
    int number = 0;
    memset(text_cells, 'x', sizeof text_cells);
    while (tables && *tables) {
        struct reference_table *table = calloc(1, sizeof *table);
        ++number;
        if (parse_table(tables, table) != 0) {
            snmp_log(LOG_ERR, "orv3_reference_tables: cannot read table %d of ORV3_REFERENCE_TABLES\n", number);
            free(table);
        } else {
            oid root[] = {1, 3, 6, 1, 4, 1, 53917, 99, 1, 1, (oid)number, 2, 2};
            register_table(table, root, OID_LENGTH(root) - 1, 1);
            register_guard(root, OID_LENGTH(root));
        }
        tables = strchr(tables, ';');
        if (tables)
            ++tables;
    }
    while (guards && *guards) {
        oid root[MAX_OID_LEN];
        size_t root_length = MAX_OID_LEN;
        char text[256];
        size_t length = strcspn(guards, ",");
        if (length < sizeof text) {
            memcpy(text, guards, length);
            text[length] = '\0';
            if (read_objid(text, root, &root_length))
                register_guard(root, root_length);
            else
                snmp_log(LOG_ERR, "orv3_reference_tables: cannot read guard OID %s\n", text);
        }
        guards += length;
        if (*guards == ',')
            ++guards;
    }
}
