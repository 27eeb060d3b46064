#pragma once

#include "app/render/Json.h"
#include "folvant/book/Reconcile.h"

namespace folvant::app {

// A reconciliation as `folvant reconcile --json` and the web pages give it: {account,
// statementDate, statementBalance, resolvedBalance, difference, unresolved, suggestions,
// resolvedSinceLast, finished}.
render::Json ReconcileOutcomeJson(const ReconcileOutcome& outcome);

}  // namespace folvant::app
