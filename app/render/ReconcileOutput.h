#pragma once

#include "app/render/Json.h"
#include "folvant/book/Reconcile.h"

namespace folvant::render {

// A reconciliation as `folvant reconcile --json` and the web pages give it: {account,
// statementDate, statementBalance, resolvedBalance, difference, unresolved, suggestions,
// resolvedSinceLast, finished}.
Json ReconcileOutcomeJson(const ReconcileOutcome& outcome);
// {statementDate, statementBalance, resolved, finished}
Json ReconciliationRecordJson(const ReconciliationRecord& record);

}  // namespace folvant::render
