// What every reader of a foreign file must give, whatever the bytes: records whose amounts
// are finite numbers and whose dates, when the date order decides them, are days; and no more
// records than the input could hold.
#pragma once

#include <cmath>
#include <cstdlib>

#include "folvant/exchange/ImportRecord.h"
#include "folvant/platform/CivilDate.h"

namespace folvant::fuzz {

inline void Check(bool condition) {
  if (!condition) std::abort();
}

// `daysOnly`: the reader reads dates under a format, so a date it gives is a day. An OFX date
// is the first eight digits of its text, kept as they are (the import review flags one that
// is no day).
inline void CheckRecords(const ImportRecords& records, std::size_t inputSize, bool daysOnly) {
  Check(records.size() <= inputSize + 1);
  for (const ImportRecord& record : records) {
    if (record.amount) Check(std::isfinite(*record.amount) && std::fabs(*record.amount) <= 1e15);
    if (record.date) {
      Check(*record.date >= 0 && *record.date <= 99999999);
      if (daysOnly) Check(platform::IsValidDateNumber(*record.date));
    }
    if (record.splits) {
      for (const ImportSplit& split : *record.splits) Check(std::isfinite(split.amount));
    }
  }
}

}  // namespace folvant::fuzz
