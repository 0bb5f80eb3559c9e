// The module's tables as a machine fills them: which tables there are comes
// from the module's own table declarations, how many rows each has and what
// its columns hold from a walk of an agent serving the machine. A zero-work
// reference table of the same shape is then described from that.
#pragma once

#include "harness/snmp_client.h"

#include <string>
#include <vector>

struct TableShape {
    std::string name;
    std::string oid;              // the table, dotted; rows hang below oid + ".1"
    size_t rows = 0;              // as the agent served them
    std::vector<unsigned> columns; // the column numbers served, ascending
    // Column kinds as the reference module reads them ("i", "u", "s<N>"),
    // texts as long as the module's are on average.
    std::string referenceKinds;
    // The module rebuilds its rows at the start of every request, a work
    // that a zero-work table does not do.
    bool rebuiltEveryRequest = false;

    size_t varbinds() const { return rows * columns.size(); }
    std::string entry() const { return oid + ".1"; }
    std::string column(unsigned number) const { return entry() + "." + std::to_string(number); }
};

// Every table the module declares, in registration order, with its rows and
// columns as the agent on `port` serves them now. Throws when a walk fails.
std::vector<TableShape> surveyTables(orv3::test::SnmpClient &client);

// The varbinds of a GETBULK walk (max-repetitions 25) of `root` that lie
// inside it. Throws when a request fails.
std::vector<orv3::test::VarBind> bulkWalk(orv3::test::SnmpClient &client, const std::string &root);
