#include "commit_at_commitset.h"

#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace orv3::agentx {
namespace {

constexpr char kHandlerName[] = "orv3_commit_at_commitset";

// The registrations that have committed a SET early, by the SET's AgentX
// transaction: each phase arrives as a request of its own, so nothing of
// one phase's request info reaches the next. A registration whose objects
// lie in several subtrees commits once for each.
using EarlyCommit = std::pair<long, const netsnmp_handler_registration *>;
std::multiset<EarlyCommit> earlyCommits;
std::mutex earlyCommitsMutex;

long transactionOf(const netsnmp_agent_request_info *reqinfo)
{
    return reqinfo->asp && reqinfo->asp->pdu ? reqinfo->asp->pdu->transid : -1;
}

// Takes one early commit of the registration in the transaction off the
// list; true when there was one.
bool takeEarlyCommit(const netsnmp_agent_request_info *reqinfo, const netsnmp_handler_registration *reginfo)
{
    std::lock_guard lock(earlyCommitsMutex);
    auto found = earlyCommits.find({transactionOf(reqinfo), reginfo});
    if (found == earlyCommits.end())
        return false;
    earlyCommits.erase(found);
    return true;
}

bool anyRequestFailed(const netsnmp_request_info *requests)
{
    for (const netsnmp_request_info *request = requests; request; request = request->next)
        if (request->status != SNMP_ERR_NOERROR)
            return true;
    return false;
}

// The agent runs ACTION over the SET's subtrees in order: when the last of
// them has passed it and none failed, every part of the SET has.
bool lastOfASucceedingAction(const netsnmp_agent_session *asp, const netsnmp_handler_registration *reginfo)
{
    if (!asp || asp->status != SNMP_ERR_NOERROR || asp->treecache_num < 0 ||
        asp->treecache[asp->treecache_num].subtree->reginfo != reginfo)
        return false;
    for (int i = 0; i <= asp->treecache_num; ++i)
        if (anyRequestFailed(asp->treecache[i].requests_begin))
            return false;
    return true;
}

// COMMIT for every subtree of the SET, as the agent would run it next.
int commitTheWholeSet(netsnmp_agent_request_info *reqinfo)
{
    netsnmp_agent_session *asp = reqinfo->asp;
    int worst = SNMP_ERR_NOERROR;
    std::vector<EarlyCommit> committed;
    reqinfo->mode = MODE_SET_COMMIT;
    for (int i = 0; i <= asp->treecache_num; ++i) {
        netsnmp_handler_registration *reginfo = asp->treecache[i].subtree->reginfo;
        if (!reginfo)
            continue;
        const int status = netsnmp_call_handlers(reginfo, reqinfo, asp->treecache[i].requests_begin);
        if (worst == SNMP_ERR_NOERROR)
            worst = status;
        committed.push_back({transactionOf(reqinfo), reginfo});
    }
    reqinfo->mode = MODE_SET_ACTION;
    // Noted only now, so that the COMMIT above passes every handler.
    std::lock_guard lock(earlyCommitsMutex);
    earlyCommits.insert(committed.begin(), committed.end());
    return worst;
}

int commitAtCommitSet(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                      netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests)
{
    switch (reqinfo->mode) {
    case MODE_SET_ACTION: {
        const int status = netsnmp_call_next_handler(handler, reginfo, reqinfo, requests);
        if (status != SNMP_ERR_NOERROR || anyRequestFailed(requests) || !lastOfASucceedingAction(reqinfo->asp, reginfo))
            return status;
        return commitTheWholeSet(reqinfo);
    }
    case MODE_SET_COMMIT:
        // Done already, inside CommitSet.
        if (takeEarlyCommit(reqinfo, reginfo))
            return SNMP_ERR_NOERROR;
        break;
    case MODE_SET_UNDO:
    case MODE_SET_FREE:
        // The master undoes a refused commit: the module ends its SET as it
        // does after a failed ACTION.
        takeEarlyCommit(reqinfo, reginfo);
        break;
    default: break;
    }
    return netsnmp_call_next_handler(handler, reginfo, reqinfo, requests);
}

} // namespace

size_t injectCommitAtCommitSet(const oid *root, size_t rootLength)
{
    std::set<netsnmp_handler_registration *> registrations;
    for (netsnmp_subtree *subtree = netsnmp_subtree_find_first(""); subtree; subtree = subtree->next) {
        netsnmp_handler_registration *reginfo = subtree->reginfo;
        if (reginfo && reginfo->rootoid &&
            netsnmp_oid_is_subtree(root, rootLength, reginfo->rootoid, reginfo->rootoid_len) == 0)
            registrations.insert(reginfo);
    }
    for (netsnmp_handler_registration *reginfo : registrations)
        netsnmp_inject_handler(reginfo, netsnmp_create_handler(kHandlerName, commitAtCommitSet));
    return registrations.size();
}

} // namespace orv3::agentx
