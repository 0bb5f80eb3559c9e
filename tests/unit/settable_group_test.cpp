// The settable groups' SET machine, driven phase by phase as the agent
// drives it. A SET through the agent reaches only the LEDs; the paths the
// agent never takes with the shipped groups are proven here.
#include "leds.h"
#include "unit_machine.h"
#include "voltTable.h"
#include "voltage.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <vector>

namespace {

struct Request {
    netsnmp_agent_request_info info{};
    netsnmp_request_info request{};
    netsnmp_variable_list *vb = nullptr;

    Request(const oid *name, size_t length, long value)
    {
        snmp_varlist_add_variable(&vb, name, length, ASN_INTEGER, &value, sizeof value);
        request.requestvb = vb;
        request.agent_req_info = &info;
    }
    ~Request() { snmp_free_varbind(vb); }
    int run(int (*handler)(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *,
                           netsnmp_request_info *),
            int mode)
    {
        // The agent hands every phase its requests unprocessed.
        info.mode = mode;
        request.processed = 0;
        return handler(nullptr, nullptr, &info, &request);
    }
};

const oid kVoltNumber[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 2, 1, 0};
const oid kIdentityLED[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 1, 0};

TEST(SettableGroup, RecordWithoutAValidatorIsReadOnlyInReserve1AndTheSetEndsIdle)
{
    Request set(kVoltNumber, OID_LENGTH(kVoltNumber), 5);
    set.run(voltage_handler, MODE_SET_RESERVE1);
    EXPECT_EQ(set.request.status, SNMP_ERR_READONLY);
    EXPECT_EQ(voltageHandlerState, 1);
    set.run(voltage_handler, MODE_SET_FREE);
    EXPECT_EQ(voltageHandlerState, 0);
    EXPECT_EQ(pvoltageVars, nullptr);
}

TEST(SettableGroup, ValidatorErrorFailsReserve1AndTheStateReturnsToIdleAtFree)
{
    auto refuse = [](agent_binding_scalar_t *, netsnmp_variable_list *) -> int32_t { return SNMP_ERR_WRONGVALUE; };
    agent_binding_validate_fn_t shipped = leds_decl[0].validate_fn;
    leds_decl[0].validate_fn = refuse;
    Request set(kIdentityLED, OID_LENGTH(kIdentityLED), 9);
    EXPECT_EQ(set.run(leds_handler, MODE_SET_RESERVE1), SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(set.request.status, SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(ledsHandlerState, 1);
    set.run(leds_handler, MODE_SET_FREE);
    EXPECT_EQ(ledsHandlerState, 0);
    EXPECT_EQ(pledsVars, nullptr);
    EXPECT_EQ(pledsLockHandle, nullptr);
    leds_decl[0].validate_fn = shipped;
}

TEST(SettableGroup, WholeSetOfAnLedWritesTheStoreAndEndsIdle)
{
    Request set(kIdentityLED, OID_LENGTH(kIdentityLED), 1);
    for (int mode : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION})
        EXPECT_EQ(set.run(leds_handler, mode), 0) << "mode " << mode;
    EXPECT_EQ(ledsHandlerState, 3);
    EXPECT_NE(pledsLockHandle, nullptr) << "locked from validation to commit";
    EXPECT_STREQ(leds_decl[0].requester, "SNMPv1");
    EXPECT_EQ(set.run(leds_handler, MODE_SET_COMMIT), 0);
    EXPECT_EQ(ledsHandlerState, 0);
    EXPECT_EQ(pledsVars, nullptr);
    EXPECT_EQ(pledsLockHandle, nullptr);

    Request get(kIdentityLED, OID_LENGTH(kIdentityLED), 0);
    EXPECT_EQ(get.run(leds_handler, MODE_GET), 0);
    EXPECT_EQ(*get.vb->val.integer, 1);

    // Put the sample machine's value back.
    Request restore(kIdentityLED, OID_LENGTH(kIdentityLED), 0);
    for (int mode : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION, MODE_SET_COMMIT})
        restore.run(leds_handler, mode);
}

TEST(SettableGroup, UndoAfterActionReleasesTheLockAndTheList)
{
    Request set(kIdentityLED, OID_LENGTH(kIdentityLED), 2);
    for (int mode : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION})
        set.run(leds_handler, mode);
    ASSERT_NE(pledsLockHandle, nullptr);
    set.run(leds_handler, MODE_SET_UNDO);
    EXPECT_EQ(ledsHandlerState, 0);
    EXPECT_EQ(pledsVars, nullptr);
    EXPECT_EQ(pledsLockHandle, nullptr) << "a later SET can lock again";
}

TEST(SettableGroup, Reserve1InALaterStateChangesNothing)
{
    Request set(kIdentityLED, OID_LENGTH(kIdentityLED), 1);
    set.run(leds_handler, MODE_SET_RESERVE1);
    set.run(leds_handler, MODE_SET_RESERVE2);
    ASSERT_EQ(ledsHandlerState, 2);
    set.run(leds_handler, MODE_SET_RESERVE1);
    EXPECT_EQ(ledsHandlerState, 2);
    set.run(leds_handler, MODE_SET_FREE);
    EXPECT_EQ(ledsHandlerState, 0);
}

TEST(SensorTableRowCount, FailedCountIsTheNegatedStatusWord)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["faults"] = {
        {{"call", "quel_dm_GetRowCount"}, {"key", "s/voltages/status/voltagetbl"}, {"result", 1}, {"status", 7}}};
    orv3::test::ServedMachine served(machine.dump());
    testing::internal::CaptureStdout();
    EXPECT_EQ(voltTable_get_row_count(), -7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "voltTable_get_row_count quel_dm_GetRowCount error 7-namespace locked\n");
}

TEST(SensorTableCommitRow, NeedsTheGroupsVariableList)
{
    int hint;
    sensor_text_entry_t *row = voltTable_createEntry(&hint);
    row->head.index = 4;
    EXPECT_EQ(voltTable_commit_row(12, row), SNMP_ERR_GENERR);
    EXPECT_EQ(row->head.last_request_id, 0);
    free(row);
}

} // namespace
