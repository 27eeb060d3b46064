#pragma once

#include "app/render/Json.h"
#include "folvant/book/Import.h"

namespace folvant::render {

// The import review as `folvant import --json` and the web pages give it: {account, file,
// format, encoding, dateFormat, dateNote, dateFormatGuessed, readNote, fileAccounts, fileAccount, rows, counts,
// newTypes, newCategories, applied, batch, added, linked, balance}.
Json ImportReviewJson(const ImportReview& review);

}  // namespace folvant::render
