#include "table_survey.h"

#include "row_table.h"

#include <map>
#include <stdexcept>

using orv3::test::SnmpClient;
using orv3::test::VarBind;

namespace {

bool inside(const std::string &oid, const std::string &root)
{
    return oid.size() > root.size() && oid.compare(0, root.size(), root) == 0 && oid[root.size()] == '.';
}

std::string dotted(const oid *arcs, size_t length)
{
    std::string text;
    for (size_t i = 0; i < length; ++i)
        text += (i ? "." : "") + std::to_string(arcs[i]);
    return text;
}

} // namespace

std::vector<VarBind> bulkWalk(SnmpClient &client, const std::string &root)
{
    std::vector<VarBind> found;
    std::string at = root;
    while (true) {
        orv3::test::Response response = client.getBulk(0, 25, {at});
        if (!response.ok() || response.varbinds.empty())
            throw std::runtime_error("walk of " + root + " failed: " + response.toString());
        for (const VarBind &varbind : response.varbinds) {
            if (varbind.isException() || !inside(varbind.oid, root))
                return found;
            found.push_back(varbind);
            at = varbind.oid;
        }
    }
}

std::vector<TableShape> surveyTables(SnmpClient &client)
{
    std::vector<TableShape> shapes;
    for (const orv3::Table *table : orv3::declaredTables()) {
        TableShape shape;
        shape.name = table->name;
        shape.oid = dotted(table->rootOid, table->rootOidLength);
        shape.rebuiltEveryRequest = table->refresh.kind == orv3::RefreshRule::EveryWalk;
        // Per column: its type and the total length of its texts.
        struct Seen {
            unsigned char type = 0;
            size_t textBytes = 0, cells = 0;
        };
        std::map<unsigned, Seen> columns;
        std::map<std::string, bool> rows;
        const std::string entry = shape.entry() + ".";
        for (const VarBind &varbind : bulkWalk(client, shape.entry())) {
            // entry.<column>.<index>
            const std::string rest = varbind.oid.substr(entry.size());
            const size_t dot = rest.find('.');
            const unsigned column = static_cast<unsigned>(std::stoul(rest.substr(0, dot)));
            rows[rest.substr(dot + 1)] = true;
            Seen &seen = columns[column];
            seen.type = varbind.type;
            seen.textBytes += varbind.octets.size();
            ++seen.cells;
        }
        shape.rows = rows.size();
        for (const auto &[number, seen] : columns) {
            shape.columns.push_back(number);
            if (!shape.referenceKinds.empty())
                shape.referenceKinds += ',';
            if (seen.type == ASN_OCTET_STR)
                shape.referenceKinds += "s" + std::to_string((seen.textBytes + seen.cells / 2) / seen.cells);
            else
                shape.referenceKinds += seen.type == ASN_INTEGER ? "i" : "u";
        }
        shapes.push_back(shape);
    }
    return shapes;
}
