#include "Ledger.h"

#include "KvEmulation.h"

Ledger& Ledger::instance() {
    static Ledger ledger;
    return ledger;
}

KvEmulation::KvTLedger KvEmulation::ledger() {
    const Ledger& counts = Ledger::instance();
    KvTLedger result;
    result.errorLists = counts.errorLists;
    result.filters = counts.filters;
    result.deviceHandles = counts.deviceHandles;
    result.transferClients = counts.transferClients;
    result.rootHandles = counts.rootHandles;
    result.inventoryTrees = counts.inventoryTrees;
    result.locks = counts.locks;
    result.remoteFiles = counts.remoteFiles;
    result.countLocks = counts.countLocks;
    result.badReleases = counts.badReleases;
    result.faultsMet = counts.faultsMet;
    result.sleptMicroseconds = counts.sleptMicroseconds;
    result.sleeps = counts.sleeps;
    return result;
}
