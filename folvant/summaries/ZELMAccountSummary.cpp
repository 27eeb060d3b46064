// Summary definitions, their date ranges and the computation of their reports.

#include "folvant/summaries/ZELMAccountSummary.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilterConditionGroup.h"
#include "folvant/kit/DateRangeForMnemonic.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntrySplitLineItem.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Port.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

using EntryList = ZELMAccountSummary::EntryList;
using platform::Day;
using platform::LocalTime;

constexpr std::chrono::seconds kDay{86400};

LocalTime MidnightOf(Day day) { return LocalTime{std::chrono::days{day}}; }
// A calendar date and back: invalid numbers come back as the day the calendar makes of them.
std::int32_t Normalized(std::int32_t date) {
  return NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(date));
}

// Every stored sum goes through RoundNearZeroValue, so cancelled sums are exactly 0.
void AddTo(double& field, double amount) { field = RoundNearZeroValue(field + amount); }

template <typename Node>
void AddParts(Node& node, double amount, bool debit) {
  AddTo(node.amount, amount);
  AddTo(debit ? node.debits : node.deposits, amount);
}

// The components of a category path: "A:B" gives "A" and "B", "" gives one empty component.
std::vector<std::string_view> Components(std::string_view path) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t colon = path.find(':', start);
    if (colon == std::string_view::npos) {
      parts.push_back(path.substr(start));
      return parts;
    }
    parts.push_back(path.substr(start, colon - start));
    start = colon + 1;
  }
}

// The positions of the nodes along a path, each within its parent's children, made when
// missing. Nodes are only ever appended, so positions stay valid while the tree grows.
std::vector<std::uint32_t> NodePositions(ZELMCategorySubtotals& tree, std::string_view path) {
  std::vector<std::uint32_t> positions;
  ZELMCategorySubtotals* level = &tree;
  for (const std::string_view component : Components(path)) {
    std::size_t i = 0;
    while (i < level->size() &&
           !platform::CaseInsensitiveEqual((*level)[i].subtotalName, component)) {
      ++i;
    }
    if (i == level->size()) {
      ZELMCategorySubtotal node;
      node.subtotalName = std::string(component);
      level->push_back(std::move(node));
    }
    positions.push_back(static_cast<std::uint32_t>(i));
    level = &(*level)[i].children;
  }
  return positions;
}

ZELMSummaryRow& RowFor(ZELMSummaryRows& rows, std::string_view key) {
  auto it = rows.find(key);
  if (it == rows.end()) it = rows.emplace(std::string(key), ZELMSummaryRow{}).first;
  return it->second;
}

void MergeRows(const ZELMSummaryRows& from, ZELMSummaryRows& into) {
  for (const auto& [key, row] : from) {
    ZELMSummaryRow& merged = RowFor(into, key);
    AddTo(merged.amount, row.amount);
    AddTo(merged.debits, row.debits);
    AddTo(merged.deposits, row.deposits);
  }
}

// Balances of many dates over the same accounts: each account's non-void amounts sorted by
// date with their running sums, so that a balance is a binary search rather than a walk over
// the register. Sums are formed in date order, so they may differ from the accounts' own
// (formed in register order) in the last bits. The same pass also forms the accounts' own
// balances before `first` and through `last`, in register order as the accounts do.
class BalanceIndex {
 public:
  BalanceIndex(const ZELMAccountSummary::AccountList& accounts, const LVCurrency* target,
               std::int32_t first, std::int32_t last)
      : target_(target) {
    ledgers_.reserve(accounts.size());
    for (const ZELMAccount* account : accounts) {
      Ledger ledger;
      ledger.account = account;
      // The entries in all-entries order: the main list, then each folder's.
      std::size_t count = account->GetEntries().size();
      for (const auto& folder : account->folders()) count += folder->entries().size();
      std::vector<std::int32_t> dates;
      std::vector<double> amounts;
      dates.reserve(count);
      amounts.reserve(count);
      double before = 0.0, through = 0.0;
      const auto take = [&](const EntryList& entries) {
        constexpr std::size_t kAhead = 16;
        for (std::size_t i = 0; i < entries.size(); ++i) {
          if (i + kAhead < entries.size()) platform::Prefetch(entries[i + kAhead].get());
          const ZELMAccountEntry& entry = *entries[i];
          if (entry.GetVoid()) continue;
          const std::int32_t date = entry.GetDate();
          const double amount = entry.GetAmount();
          dates.push_back(date);
          amounts.push_back(amount);
          if (date < first) before += amount;
          if (date <= last) through += amount;
        }
      };
      take(account->GetEntries());
      for (const auto& folder : account->folders()) take(folder->entries());
      const auto convert = [&](double own) {
        return account->currency()->convertAmount(account->GetStartingBalance() + own, target);
      };
      rangeStart_ += convert(before);
      rangeEnd_ += convert(through);
      Fill(ledger, std::move(dates), amounts);
      ledgers_.push_back(std::move(ledger));
    }
  }

  // As GetRunningBalanceBeforeDate(first) and GetRunningBalanceThroughDate(last).
  double RangeStart() const { return rangeStart_; }
  double RangeEnd() const { return rangeEnd_; }
  double BeforeDate(std::int32_t date) const { return Sum(date, false); }
  double ThroughDate(std::int32_t date) const { return Sum(date, true); }

 private:
  struct Ledger {
    const ZELMAccount* account;
    std::vector<std::int32_t> dates;
    std::vector<double> sums;  // sums[i]: the first i amounts
  };

  double Sum(std::int32_t date, bool through) const {
    double balance = 0.0;
    for (const Ledger& ledger : ledgers_) {
      const auto end = through ? std::upper_bound(ledger.dates.begin(), ledger.dates.end(), date)
                               : std::lower_bound(ledger.dates.begin(), ledger.dates.end(), date);
      const double own = ledger.account->GetStartingBalance() +
                         ledger.sums[static_cast<std::size_t>(end - ledger.dates.begin())];
      balance += ledger.account->currency()->convertAmount(own, target_);
    }
    return balance;
  }

  // The dates in a stable date order and the running sums of the amounts in that order.
  // Nothing to sort for a register already in date order; otherwise a counting sort when the
  // dates spread over not many more numbers than there are amounts (ten years span about
  // 91,000 date numbers), else a stable sort.
  static void Fill(Ledger& ledger, std::vector<std::int32_t> dates,
                   const std::vector<double>& amounts) {
    const std::size_t count = dates.size();
    std::vector<double>& sums = ledger.sums;  // sums[i + 1]: first the i-th amount, in place
    sums.resize(count + 1);
    sums[0] = 0.0;
    if (std::is_sorted(dates.begin(), dates.end())) {
      std::copy(amounts.begin(), amounts.end(), sums.begin() + 1);
      ledger.dates = std::move(dates);
    } else {
      ledger.dates.resize(count);
      const auto [low, high] = std::minmax_element(dates.begin(), dates.end());
      const std::int64_t base = *low;
      const auto spread = static_cast<std::uint64_t>(*high - base);
      if (count < 0xFFFFFFFFu && spread < 2 * static_cast<std::uint64_t>(count) + 65536) {
        std::vector<std::uint32_t> starts(static_cast<std::size_t>(spread) + 2, 0);
        for (const std::int32_t date : dates) ++starts[static_cast<std::size_t>(date - base) + 1];
        for (std::size_t d = 1; d < starts.size(); ++d) starts[d] += starts[d - 1];
        for (std::size_t i = 0; i < count; ++i) {
          const std::size_t at = starts[static_cast<std::size_t>(dates[i] - base)]++;
          ledger.dates[at] = dates[i];
          sums[at + 1] = amounts[i];
        }
      } else {
        std::vector<std::size_t> order(count);
        for (std::size_t i = 0; i < count; ++i) order[i] = i;
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return dates[a] < dates[b]; });
        for (std::size_t i = 0; i < count; ++i) {
          ledger.dates[i] = dates[order[i]];
          sums[i + 1] = amounts[order[i]];
        }
      }
    }
    for (std::size_t i = 0; i < count; ++i) sums[i + 1] = sums[i] + sums[i + 1];
  }

  const LVCurrency* target_;
  std::vector<Ledger> ledgers_;
  double rangeStart_ = 0.0;
  double rangeEnd_ = 0.0;
};

// Numbers for texts, in the order first met: 0, 1, 2... Open addressing on a hash of the
// bytes, as it is asked for every entry. The table keeps views: the texts must outlive it.
class TextNumbers {
 public:
  std::uint32_t operator()(std::string_view text) {
    if (2 * (texts_.size() + 1) > slots_.size()) Grow();
    const std::uint64_t hash = Hash(text);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
      Slot& slot = slots_[i];
      if (slot.number == kEmpty) {
        slot = {hash, static_cast<std::uint32_t>(texts_.size())};
        texts_.push_back(text);
        return slot.number;
      }
      if (slot.hash == hash && Same(texts_[slot.number], text)) return slot.number;
    }
  }
  const std::vector<std::string_view>& texts() const { return texts_; }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t number = kEmpty;
  };

  // Eight bytes at a time, each mixed by a multiply and a shift; short tails by a few loads
  // of fixed size, which compile to plain moves rather than calls.
  static std::uint64_t Hash(std::string_view text) {
    const char* bytes = text.data();
    const std::size_t size = text.size();
    std::uint64_t hash = 0x9E3779B97F4A7C15ull ^ size;
    std::size_t at = 0;
    for (; at + 8 <= size; at += 8) {
      hash = (hash ^ Load<std::uint64_t>(bytes + at)) * 0xFF51AFD7ED558CCDull;
      hash ^= hash >> 32;
    }
    const std::size_t rest = size - at;
    std::uint64_t word = 0;
    if (rest >= 4) {
      word = Load<std::uint32_t>(bytes + at) |
             static_cast<std::uint64_t>(Load<std::uint32_t>(bytes + size - 4)) << 32;
    } else if (rest > 0) {
      word = static_cast<std::uint8_t>(bytes[at]) |
             static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes[at + rest / 2])) << 8 |
             static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes[size - 1])) << 16;
    }
    hash = (hash ^ word) * 0xC4CEB9FE1A85EC53ull;
    return hash ^ (hash >> 29);
  }
  template <typename Word>
  static Word Load(const char* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
  }
  // Equal bytes, compared a word at a time.
  static bool Same(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    const std::size_t size = a.size();
    if (size < 8) {
      for (std::size_t i = 0; i < size; ++i) {
        if (a[i] != b[i]) return false;
      }
      return true;
    }
    for (std::size_t at = 0; at + 8 <= size; at += 8) {
      if (Load<std::uint64_t>(a.data() + at) != Load<std::uint64_t>(b.data() + at)) return false;
    }
    return Load<std::uint64_t>(a.data() + size - 8) == Load<std::uint64_t>(b.data() + size - 8);
  }

  void Grow() {
    std::vector<Slot> old = std::move(slots_);
    slots_.assign(std::max<std::size_t>(64, 2 * old.size()), Slot{});
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (slot.number == kEmpty) continue;
      std::size_t i = slot.hash & mask;
      while (slots_[i].number != kEmpty) i = (i + 1) & mask;
      slots_[i] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::vector<std::string_view> texts_;
};

// Numbers given to small integers (type and category numbers): a list for the usual small
// ones, a map for the rest.
class NumberIds {
 public:
  static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
  std::uint32_t& operator[](std::int32_t number) {
    if (number >= -1 && number < kListed) {
      const auto at = static_cast<std::size_t>(number + 1);
      if (at >= listed_.size()) listed_.resize(at + 1, kUnknown);
      return listed_[at];
    }
    return others_.try_emplace(number, kUnknown).first->second;
  }

 private:
  static constexpr std::int32_t kListed = 4096;
  std::vector<std::uint32_t> listed_;
  std::unordered_map<std::int32_t, std::uint32_t> others_;
};

// The periods of a range as first and last days, both included.
std::vector<std::pair<Day, Day>> Periods(std::int32_t style, std::int32_t startDate,
                                         std::int32_t endDate) {
  std::vector<std::pair<Day, Day>> periods;
  if (style < 0 || style > 5) return periods;
  const Day last = platform::DayFromDateNumber(endDate);
  Day start = platform::DayFromDateNumber(startDate);
  // The range ends at 23:59:59 of its last day, so it is later than any start up to that day.
  while (start <= last) {
    Day end;  // the day whose 23:59:59 ends the period
    const platform::CivilDate civil = platform::CivilFromDay(start);
    switch (style) {
      case 0:
        end = start;
        break;
      case 1:  // through Saturday
        end = start + (6 - platform::Weekday(start));
        break;
      case 2:
        end = platform::DayFromCivil(civil.year, civil.month + 1, 1) - 1;
        break;
      case 3:  // three months from the start month, not calendar quarters
        end = platform::DayFromCivil(civil.year, civil.month + 3, 1) - 1;
        break;
      case 4:
        end = platform::DayFromCivil(civil.year + 1, 1, 1) - 1;
        break;
      default:
        end = last;
        break;
    }
    end = std::min(end, last);
    periods.emplace_back(start, end);
    start = end + 1;
  }
  return periods;
}

}  // namespace

// What one computation looks up again and again: the target currency, and the type names and
// category paths of the numbers met so far, per accounts controller (or per account, for an
// account without one). Two ways to sum: Subtotal, entry by entry, for one period's list;
// Select and Period for a whole report, which reads each entry once, in list order, and then
// sums small records in date order. Both add the same amounts in the same order.
class ZELMAccountSummary::Computation {
 public:
  explicit Computation(const ZELMAccountSummary& summary)
      : currency_(summary.currency()),
        parents_(summary.parentCategorySubtotalsIncludeSubcategorySubtotals_) {}

  const LVCurrency* target() const { return currency_.get(); }

  // The totals, rows and category tree of a period's entries (balances are the caller's).
  ZELMPeriodSubtotal Subtotal(const std::shared_ptr<ZELMAccountEntry>* first,
                              const std::shared_ptr<ZELMAccountEntry>* last, LocalTime startDate,
                              LocalTime endDate) {
    ZELMPeriodSubtotal period;
    period.entries.assign(first, last);
    period.entryCount = static_cast<std::int64_t>(last - first);
    period.startDate = startDate;
    period.endDate = endDate;
    positions_.clear();
    descriptions_.clear();
    types_.clear();
    toFroms_.clear();
    for (const auto* it = first; it != last; ++it) Add(period, **it);
    period.runningTotal = period.total;
    return period;
  }

  // ---- The whole report's computation ----
  // One pass over `entries` in list order (the order they were made in, so mostly the order
  // they sit in memory) takes the debits, then the deposits, dated first..last that `group`
  // keeps, as they would come out of the summary's filter. Each becomes a small record of what
  // the sums need, its texts, type name and category path as numbers; the records, not the
  // entries, are then sorted by date and number, keeping the list order on ties.
  void Select(const EntryList& entries, bool debits, bool deposits, std::int32_t first,
              std::int32_t last, const ZELMFilterConditionGroup* group) {
    std::optional<ZELMFilterConditionGroup::Prepared> prepared;
    if (group != nullptr) prepared.emplace(*group);
    // The keys of the debits, and apart, of the deposits: an entry that is both is listed
    // twice, as in the filter's result, and has a record for each time.
    std::vector<Key> keys, depositKeys;
    std::vector<Record> records;
    keys.reserve(entries.size());
    depositKeys.reserve(entries.size());
    records.reserve(entries.size());
    constexpr std::size_t kAhead = 16;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (i + kAhead < entries.size()) {
        const char* ahead = reinterpret_cast<const char*>(entries[i + kAhead].get());
        platform::Prefetch(ahead);
        platform::Prefetch(ahead + 64);
        platform::Prefetch(ahead + 128);
      }
      const ZELMAccountEntry& entry = *entries[i];
      const bool debit = debits && entry.IsDebit();
      const bool deposit = deposits && entry.IsDeposit();
      if (!debit && !deposit) continue;
      const std::int32_t date = entry.GetDate();
      if (date < first || date > last) continue;
      if (prepared && prepared->Test(entry) != ZELMFilterConditionGroup::Prepared::Verdict::kKept) {
        continue;
      }
      const Key key{date, entry.GetNumber(), static_cast<std::uint32_t>(records.size())};
      // The owning pointer is copied here, where the entry was just read, rather than in date
      // order, where each copy would wait on memory.
      records.push_back(MakeRecord(entries[i]));
      (debit ? keys : depositKeys).push_back(key);
      if (debit && deposit) {
        records.push_back(records.back());
        depositKeys.push_back({date, key.number, key.record + 1});
      }
    }
    keys.insert(keys.end(), depositKeys.begin(), depositKeys.end());
    depositKeys = {};

    SortKeys(keys);
    // Everything into date order, so that the periods read it front to back.
    dates_.resize(keys.size());
    records_.resize(keys.size());
    std::vector<Line> lines;
    lines.reserve(lines_.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
      if (i + kAhead < keys.size()) platform::Prefetch(&records[keys[i + kAhead].record]);
      dates_[i] = keys[i].date;
      Record& record = records_[i] = std::move(records[keys[i].record]);
      if (record.flags & kSplit) {
        const auto from = lines_.begin() + record.description;
        record.description = static_cast<std::uint32_t>(lines.size());
        lines.insert(lines.end(), from, from + record.toFrom);
      }
    }
    lines_.swap(lines);
    descriptionSums_.Size(texts_.texts().size());
    toFromSums_.Size(texts_.texts().size());
    typeSums_.Size(typeNames_.texts().size());
    pathStamps_.assign(pathNodes_.size(), 0);
    nodes_.resize(nodeCount_);
  }

  // The selected entries are handed over to the periods: ask for each period once, in date
  // order.
  ZELMPeriodSubtotal Period(std::int32_t first, std::int32_t last, LocalTime startDate,
                            LocalTime endDate) {
    const auto from = std::lower_bound(dates_.begin(), dates_.end(), first);
    const auto to = std::upper_bound(from, dates_.end(), last);
    Record* begin = records_.data() + (from - dates_.begin());
    Record* end = records_.data() + (to - dates_.begin());
    ZELMPeriodSubtotal period;
    period.entries.reserve(static_cast<std::size_t>(end - begin));
    for (Record* record = begin; record != end; ++record) {
      period.entries.push_back(std::move(record->entry));
    }
    period.entryCount = static_cast<std::int64_t>(end - begin);
    period.startDate = startDate;
    period.endDate = endDate;
    ++stamp_;
    descriptionSums_.touched.clear();
    toFromSums_.touched.clear();
    typeSums_.touched.clear();
    roots_ = {};
    for (const Record* record = begin; record != end; ++record) Add(period, *record);
    descriptionSums_.Into(period.descriptionsSubtotals, texts_.texts());
    toFromSums_.Into(period.toFromSubtotals, texts_.texts());
    typeSums_.Into(period.typesSubtotals, typeNames_.texts());
    period.categoriesSubtotals = Tree(roots_.first);
    period.runningTotal = period.total;
    return period;
  }

 private:
  struct Source {
    const void* key = nullptr;
    std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories;
    std::unordered_map<std::int32_t, std::string> categoryPaths;
    std::unordered_map<std::int32_t, std::string> typeNames;
    // The numbers the report's records give the type names and category paths.
    NumberIds typeIds;
    NumberIds pathIds;
  };

  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  static constexpr std::uint32_t kVoid = 1, kDebit = 2, kDeposit = 4, kResolved = 8,
                                 kTaxDeductible = 16, kSplit = 32;

  struct Key {
    std::int32_t date;
    std::int32_t number;
    std::uint32_t record;
  };
  // A selected entry: for one with line items, `description` is the first of its lines and
  // `toFrom` their count.
  struct Record {
    std::shared_ptr<ZELMAccountEntry> entry;
    std::uint32_t flags;
    double amount;  // in the report's currency
    std::uint32_t type;
    std::uint32_t description;
    std::uint32_t toFrom;
    std::uint32_t path;
  };
  struct Line {
    double amount;
    std::uint32_t description;
    std::uint32_t toFrom;
    std::uint32_t path;
  };

  // One period's rows by number: each row is cleared when first met in a period (its stamp
  // is older), and the rows met are listed in order.
  struct RowSums {
    std::vector<ZELMSummaryRow> sums;
    std::vector<std::uint32_t> stamps;
    std::vector<std::uint32_t> touched;

    void Size(std::size_t count) {
      sums.resize(count);
      stamps.assign(count, 0);
    }
    ZELMSummaryRow& Touch(std::uint32_t id, std::uint32_t stamp) {
      if (stamps[id] != stamp) {
        stamps[id] = stamp;
        sums[id] = ZELMSummaryRow{};
        touched.push_back(id);
      }
      return sums[id];
    }
    void Into(ZELMSummaryRows& rows, const std::vector<std::string_view>& names) const {
      for (const std::uint32_t id : touched) rows.emplace(std::string(names[id]), sums[id]);
    }
  };

  // A node of the category tree, the same for every path whose leading components match
  // without regard to case; per period, its place in that period's tree and its sums.
  struct Children {
    std::uint32_t first = kNone;
    std::uint32_t last = kNone;
  };
  struct Node {
    std::uint32_t stamp = 0;
    Children children;
    std::uint32_t next = kNone;
    std::string_view name;  // the component of the path that made it in the period
    double amount = 0.0;
    double debits = 0.0;
    double deposits = 0.0;
  };

  double Convert(const ZELMAccountEntry& entry, double amount) const {
    const ZELMAccount* account = entry.GetAccount();
    if (account == nullptr) return amount;
    return account->currency()->convertAmount(amount, currency_.get());
  }

  Source& SourceOf(const ZELMAccountEntry& entry) {
    const ZELMAccount* account = entry.GetAccount();
    const ZELMAccountsController* controller =
        account != nullptr ? account->accountsController() : nullptr;
    const void* key = controller != nullptr ? static_cast<const void*>(controller)
                                            : static_cast<const void*>(account);
    if (last_ != nullptr && last_->key == key) return *last_;
    for (const auto& source : sources_) {
      if (source->key == key) return *(last_ = source.get());
    }
    // Held by pointer: the caches' strings must keep their addresses (see AddCategory).
    Source& source = *sources_.emplace_back(std::make_unique<Source>());
    source.key = key;
    if (controller != nullptr) source.categories = controller->allCategories();
    return *(last_ = &source);
  }

  const std::string& TypeName(const ZELMAccountEntry& entry) {
    Source& source = SourceOf(entry);
    const std::int32_t number = entry.GetType();
    auto it = source.typeNames.find(number);
    if (it != source.typeNames.end()) return it->second;
    const ZELMAccount* account = entry.GetAccount();
    std::shared_ptr<ZELMAccountEntryType> type;
    if (account != nullptr) {
      type = account->accountsController() != nullptr
                 ? account->accountsController()->accountEntryTypeForNumber(number)
                 : account->accountEntryTypeForNumber(number);
    }
    return source.typeNames.emplace(number, type ? type->GetName() : std::string()).first->second;
  }

  const std::string& CategoryPath(const ZELMAccountEntry& entry, std::int32_t number) {
    Source& source = SourceOf(entry);
    auto it = source.categoryPaths.find(number);
    if (it != source.categoryPaths.end()) return it->second;
    std::shared_ptr<ZELMAccountEntryCategory> category;
    const ZELMAccount* account = entry.GetAccount();
    if (account != nullptr && account->accountsController() != nullptr) {
      category = ZELMAccountSummary_CategoryWithNumber(&source.categories, number);
    } else if (account != nullptr) {
      category = account->accountEntryCategoryForNumber(number);
    }
    return source.categoryPaths.emplace(number, category ? category->fullName() : std::string())
        .first->second;
  }

  // The period's row of a text: looked up by hash, the rows' own keys serving as the index's
  // keys (a map's keys do not move).
  using RowIndex = std::unordered_map<std::string_view, ZELMSummaryRow*>;
  static ZELMSummaryRow& Row(RowIndex& index, ZELMSummaryRows& rows, std::string_view text) {
    const auto it = index.find(text);
    if (it != index.end()) return *it->second;
    const auto row = rows.emplace(std::string(text), ZELMSummaryRow{}).first;
    index.emplace(row->first, &row->second);
    return row->second;
  }

  void AddCategory(ZELMCategorySubtotals& tree, const std::string& path, double amount,
                   bool debit) {
    // The path strings live in the caches for the whole computation, so their addresses
    // identify them.
    auto it = positions_.find(&path);
    if (it == positions_.end()) it = positions_.emplace(&path, NodePositions(tree, path)).first;
    const std::vector<std::uint32_t>& positions = it->second;
    ZELMCategorySubtotals* level = &tree;
    for (std::size_t depth = 0; depth < positions.size(); ++depth) {
      ZELMCategorySubtotal& node = (*level)[positions[depth]];
      // The node of the whole path always; the nodes of its leading parts when parents count
      // their subcategories.
      if (parents_ || depth + 1 == positions.size()) AddParts(node, amount, debit);
      level = &node.children;
    }
  }

  void Add(ZELMPeriodSubtotal& period, const ZELMAccountEntry& entry) {
    if (entry.GetVoid()) return;
    const double amount = Convert(entry, entry.GetAmount());
    const bool debit = entry.IsDebit();
    AddTo(period.total, amount);
    if (entry.IsDeposit()) AddTo(period.depositsTotal, amount);
    if (debit) AddTo(period.debitsTotal, amount);
    AddTo(entry.GetCleared() != 0 ? period.resolvedTotal : period.unresolvedTotal, amount);
    AddTo(entry.GetTaxDeductible() ? period.taxDeductibleTotal : period.taxableTotal, amount);
    AddParts(Row(types_, period.typesSubtotals, TypeName(entry)), amount, debit);

    const auto& items = entry.splitLineItems();
    if (items.empty()) {
      AddParts(Row(descriptions_, period.descriptionsSubtotals, entry.GetDescription()), amount,
               debit);
      AddParts(Row(toFroms_, period.toFromSubtotals, entry.GetToFrom()), amount, debit);
      AddCategory(period.categoriesSubtotals, CategoryPath(entry, entry.GetCategory()), amount,
                  debit);
      return;
    }
    for (const auto& item : items) {
      const double part = Convert(entry, item->amount());
      const bool debitPart = part < 0.0;
      const std::string& description =
          item->description().empty() ? entry.GetDescription() : item->description();
      const std::string& toFrom = item->toFrom().empty() ? entry.GetToFrom() : item->toFrom();
      AddParts(Row(descriptions_, period.descriptionsSubtotals, description), part, debitPart);
      AddParts(Row(toFroms_, period.toFromSubtotals, toFrom), part, debitPart);
      AddCategory(period.categoriesSubtotals, CategoryPath(entry, item->category()), part,
                  debitPart);
    }
  }

  // The entries' own texts outlive the computation, so the table keeps views of them.
  std::uint32_t TextId(const std::string& text) { return texts_(text); }

  std::uint32_t TypeId(const ZELMAccountEntry& entry) {
    std::uint32_t& id = SourceOf(entry).typeIds[entry.GetType()];
    if (id == NumberIds::kUnknown) id = typeNames_(TypeName(entry));
    return id;
  }

  // A path's number, and the first time a path is met, the nodes along it: a node is the
  // child of the node before it (or a top node) whose name folds to the same text.
  std::uint32_t PathId(const ZELMAccountEntry& entry, std::int32_t number) {
    std::uint32_t& id = SourceOf(entry).pathIds[number];
    if (id != NumberIds::kUnknown) return id;
    const std::string& path = CategoryPath(entry, number);
    id = paths_(path);
    if (id == pathNodes_.size()) {
      std::vector<std::pair<std::uint32_t, std::string_view>> nodes;
      std::uint32_t parent = kNone;
      for (const std::string_view component : Components(path)) {
        const auto node =
            nodeIds_.try_emplace(std::pair(parent, platform::CaseFold(component)), nodeCount_)
                .first;
        if (node->second == nodeCount_) ++nodeCount_;
        parent = node->second;
        nodes.emplace_back(parent, component);
      }
      pathNodes_.push_back(std::move(nodes));
    }
    return id;
  }

  Record MakeRecord(const std::shared_ptr<ZELMAccountEntry>& owner) {
    const ZELMAccountEntry& entry = *owner;
    Record record{owner, 0, 0.0, 0, 0, 0, 0};
    if (entry.GetVoid()) {
      record.flags = kVoid;
      return record;
    }
    record.amount = Convert(entry, entry.GetAmount());
    record.flags = (entry.IsDebit() ? kDebit : 0) | (entry.IsDeposit() ? kDeposit : 0) |
                   (entry.GetCleared() != 0 ? kResolved : 0) |
                   (entry.GetTaxDeductible() ? kTaxDeductible : 0);
    record.type = TypeId(entry);
    const auto& items = entry.splitLineItems();
    if (items.empty()) {
      record.description = TextId(entry.GetDescription());
      record.toFrom = TextId(entry.GetToFrom());
      record.path = PathId(entry, entry.GetCategory());
      return record;
    }
    record.flags |= kSplit;
    record.description = static_cast<std::uint32_t>(lines_.size());
    record.toFrom = static_cast<std::uint32_t>(items.size());
    for (const auto& item : items) {
      const std::string& description =
          item->description().empty() ? entry.GetDescription() : item->description();
      const std::string& toFrom = item->toFrom().empty() ? entry.GetToFrom() : item->toFrom();
      lines_.push_back({Convert(entry, item->amount()), TextId(description), TextId(toFrom),
                        PathId(entry, item->category())});
    }
    return record;
  }

  // By date, then number, keeping the order given on ties: an LSD radix sort (stable) on the
  // number and then on the date, each less its smallest value, eleven bits a pass, as many
  // passes as the spread needs.
  static void SortKeys(std::vector<Key>& keys) {
    std::vector<Key> spare(keys.size());
    const auto byField = [&](auto field) {
      if (keys.empty()) return;
      const auto [low, high] =
          std::minmax_element(keys.begin(), keys.end(),
                              [&](const Key& a, const Key& b) { return field(a) < field(b); });
      const std::uint32_t base = static_cast<std::uint32_t>(field(*low));
      const std::uint32_t spread = static_cast<std::uint32_t>(field(*high)) - base;
      for (unsigned shift = 0; shift < 32 && (spread >> shift) != 0; shift += 11) {
        std::array<std::size_t, 2049> counts{};
        const auto digit = [&](const Key& key) {
          return ((static_cast<std::uint32_t>(field(key)) - base) >> shift) & 2047u;
        };
        for (const Key& key : keys) ++counts[digit(key) + 1];
        for (std::size_t d = 1; d < counts.size(); ++d) counts[d] += counts[d - 1];
        for (const Key& key : keys) spare[counts[digit(key)]++] = key;
        keys.swap(spare);
      }
    };
    byField([](const Key& key) { return key.number; });
    byField([](const Key& key) { return key.date; });
  }

  void AddCategory(std::uint32_t path, double amount, bool debit) {
    const auto& nodes = pathNodes_[path];
    if (pathStamps_[path] != stamp_) {
      // The path's first entry in the period makes its missing nodes, in order.
      pathStamps_[path] = stamp_;
      Children* level = &roots_;
      for (const auto& [id, name] : nodes) {
        Node& node = nodes_[id];
        if (node.stamp != stamp_) {
          node = Node{};
          node.stamp = stamp_;
          node.name = name;
          if (level->last == kNone) {
            level->first = id;
          } else {
            nodes_[level->last].next = id;
          }
          level->last = id;
        }
        level = &node.children;
      }
    }
    for (std::size_t depth = 0; depth < nodes.size(); ++depth) {
      if (parents_ || depth + 1 == nodes.size())
        AddParts(nodes_[nodes[depth].first], amount, debit);
    }
  }

  ZELMCategorySubtotals Tree(std::uint32_t first) const {
    ZELMCategorySubtotals level;
    for (std::uint32_t id = first; id != kNone; id = nodes_[id].next) {
      const Node& node = nodes_[id];
      ZELMCategorySubtotal subtotal;
      subtotal.subtotalName = std::string(node.name);
      subtotal.amount = node.amount;
      subtotal.debits = node.debits;
      subtotal.deposits = node.deposits;
      subtotal.children = Tree(node.children.first);
      level.push_back(std::move(subtotal));
    }
    return level;
  }

  void Add(ZELMPeriodSubtotal& period, const Record& record) {
    if (record.flags & kVoid) return;
    const double amount = record.amount;
    const bool debit = (record.flags & kDebit) != 0;
    AddTo(period.total, amount);
    if (record.flags & kDeposit) AddTo(period.depositsTotal, amount);
    if (debit) AddTo(period.debitsTotal, amount);
    AddTo((record.flags & kResolved) ? period.resolvedTotal : period.unresolvedTotal, amount);
    AddTo((record.flags & kTaxDeductible) ? period.taxDeductibleTotal : period.taxableTotal,
          amount);
    AddParts(typeSums_.Touch(record.type, stamp_), amount, debit);
    if (!(record.flags & kSplit)) {
      AddParts(descriptionSums_.Touch(record.description, stamp_), amount, debit);
      AddParts(toFromSums_.Touch(record.toFrom, stamp_), amount, debit);
      AddCategory(record.path, amount, debit);
      return;
    }
    const Line* line = lines_.data() + record.description;
    for (const Line* end = line + record.toFrom; line != end; ++line) {
      const bool debitPart = line->amount < 0.0;
      AddParts(descriptionSums_.Touch(line->description, stamp_), line->amount, debitPart);
      AddParts(toFromSums_.Touch(line->toFrom, stamp_), line->amount, debitPart);
      AddCategory(line->path, line->amount, debitPart);
    }
  }

  std::shared_ptr<LVCurrency> currency_;
  bool parents_;
  std::vector<std::unique_ptr<Source>> sources_;
  Source* last_ = nullptr;
  std::unordered_map<const std::string*, std::vector<std::uint32_t>> positions_;
  RowIndex descriptions_, types_, toFroms_;

  // The report's computation: the records in date order with their dates, the line items,
  // the numbered texts, type names, paths and nodes, and the current period's sums.
  std::vector<std::int32_t> dates_;
  std::vector<Record> records_;
  std::vector<Line> lines_;
  TextNumbers texts_, typeNames_, paths_;
  std::vector<std::vector<std::pair<std::uint32_t, std::string_view>>> pathNodes_;
  std::map<std::pair<std::uint32_t, std::string>, std::uint32_t> nodeIds_;
  std::uint32_t nodeCount_ = 0;
  std::uint32_t stamp_ = 0;
  RowSums descriptionSums_, toFromSums_, typeSums_;
  std::vector<std::uint32_t> pathStamps_;
  std::vector<Node> nodes_;
  Children roots_;
};

// ---- Definition ----

ZELMAccountSummary::ZELMAccountSummary()
    : name_("Untitled Summary"), startDate_(platform::Today()), endDate_(platform::Today()) {}

ZELMAccountSummary::ZELMAccountSummary(const plist::Dictionary* options,
                                       std::optional<EntryList> entries)
    : ZELMAccountSummary() {
  if (options == nullptr) return;
  setEntries(std::move(entries));
  setOptionsFromDictionary(options);
}

plist::Dictionary ZELMAccountSummary::optionsAsDictionary() const {
  plist::Dictionary dict;
  dict.reserve(19);
  dict.append("name", name_);
  dict.append("dateRangeStyle", dateRangeStyle_);
  dict.append("startDate", startDate_);
  dict.append("endDate", endDate_);
  dict.append("showStyle", showStyle_);
  dict.append("showDebits", showDebits_);
  dict.append("showDeposits", showDeposits_);
  dict.append("showResolved", showResolved_);
  dict.append("showTaxDeductible", showTaxDeductible_);
  dict.append("showChecks", showChecks_);
  dict.append("subtotalDescriptions", subtotalDescriptions_);
  dict.append("subtotalTypes", subtotalTypes_);
  dict.append("subtotalToFroms", subtotalToFroms_);
  dict.append("subtotalCategories", subtotalCategories_);
  dict.append("parentCategorySubtotalsIncludeSubcategorySubtotals",
              parentCategorySubtotalsIncludeSubcategorySubtotals_);
  dict.append("subtotalPeriodStyle", subtotalPeriodStyle_);
  dict.append("filter", filter_);
  dict.append("filterType", filterType_);
  dict.append("filterData", filterData_);
  return dict;
}

void ZELMAccountSummary::setOptionsFromDictionary(const plist::Dictionary* options) {
  if (options == nullptr) return;
  const auto text = [&](std::string_view key, std::string& field) {
    if (const plist::Value* value = options->find(key)) {
      const std::string* string = value->asString();
      field = string != nullptr ? *string : std::string();
    }
  };
  const auto integer = [&](std::string_view key, std::int32_t& field) {
    if (const plist::Value* value = options->find(key)) field = value->intValue();
  };
  const auto boolean = [&](std::string_view key, bool& field) {
    if (const plist::Value* value = options->find(key)) field = value->boolValue();
  };
  text("name", name_);
  integer("dateRangeStyle", dateRangeStyle_);
  integer("startDate", startDate_);
  integer("endDate", endDate_);
  integer("showStyle", showStyle_);
  boolean("showDebits", showDebits_);
  boolean("showDeposits", showDeposits_);
  integer("showResolved", showResolved_);
  integer("showTaxDeductible", showTaxDeductible_);
  integer("showChecks", showChecks_);
  boolean("subtotalDescriptions", subtotalDescriptions_);
  boolean("subtotalTypes", subtotalTypes_);
  boolean("subtotalToFroms", subtotalToFroms_);
  boolean("subtotalCategories", subtotalCategories_);
  boolean("parentCategorySubtotalsIncludeSubcategorySubtotals",
          parentCategorySubtotalsIncludeSubcategorySubtotals_);
  integer("subtotalPeriodStyle", subtotalPeriodStyle_);
  boolean("filter", filter_);
  integer("filterType", filterType_);
  text("filterData", filterData_);
}

int ZELMAccountSummary::NameIsGreaterThan(const ZELMAccountSummary& other) const {
  const int c = platform::CaseInsensitiveCompare(name_, other.name_);
  return (c > 0) - (c < 0);
}

void ZELMAccountSummary::setAccounts(const AccountList& accounts) {
  accounts_.clear();
  for (const ZELMAccount* account : accounts) {
    if (account != nullptr) accounts_.push_back(account);
  }
}

void ZELMAccountSummary::updateDateRange() {
  std::optional<DateRange> range;
  const std::int32_t style = dateRangeStyle_;
  if (style == 0 || style == 1) {
    const auto first = GetFirstEntry();
    if (first == nullptr) {
      range = DateRangeForMnemonic(kMnemonicToday);
    } else if (style == 0) {
      range = DateRange{first->GetDate(), GetLastEntry()->GetDate()};
    } else {
      range = DateRange{first->GetDate(), platform::Today()};
    }
  } else if (style == 2) {
    range = DateRangeForMnemonic(kMnemonicToday);
  } else if (style >= 3 && style <= 11) {
    range = DateRangeForMnemonic(style - 2);
  } else if (style >= 15 && style <= 18) {
    range = DateRangeForMnemonic(style - 5);
  } else if (style == 20) {
    range = DateRange{startDate_, endDate_};
  }
  if (!range) return;
  // Through calendar dates, as the range is stored: a number the calendar reads as another
  // day is stored as that day.
  startDate_ = Normalized(range->start);
  endDate_ = Normalized(range->end);
}

// ---- Entries and balances ----

std::shared_ptr<LVCurrency> ZELMAccountSummary::currency() const {
  if (accounts_.empty()) return std::make_shared<LVCurrency>();
  const ZELMAccount* first = accounts_.front();
  if (accounts_.size() > 1 && first->accountsController() != nullptr) {
    if (auto base = first->accountsController()->currency()) return base;
  }
  return first->currency();
}

ZELMAccountSummary::EntryList ZELMAccountSummary::GetDebits() const {
  EntryList debits;
  for (const auto& entry : entries_) {
    if (entry->IsDebit()) debits.push_back(entry);
  }
  return debits;
}

ZELMAccountSummary::EntryList ZELMAccountSummary::GetDeposits() const {
  EntryList deposits;
  for (const auto& entry : entries_) {
    if (entry->IsDeposit()) deposits.push_back(entry);
  }
  return deposits;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountSummary::GetFirstEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* first = nullptr;
  for (const auto& entry : entries_) {
    if (first == nullptr || entry->GetDate() < (*first)->GetDate()) first = &entry;
  }
  return first != nullptr ? *first : nullptr;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountSummary::GetLastEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* last = nullptr;
  for (const auto& entry : entries_) {
    if (last == nullptr || entry->GetDate() > (*last)->GetDate()) last = &entry;
  }
  return last != nullptr ? *last : nullptr;
}

double ZELMAccountSummary::GetStartingBalance() const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    balance += account->currency()->convertAmount(account->GetStartingBalance(), target.get());
  }
  return balance;
}

double ZELMAccountSummary::GetStartingBalanceBeforeDate(std::int32_t date) const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    const auto first = account->GetFirstEntry();
    if ((first != nullptr ? first->GetDate() : 0) < date) {
      balance += account->currency()->convertAmount(account->GetStartingBalance(), target.get());
    }
  }
  return balance;
}

double ZELMAccountSummary::GetRunningBalanceBeforeDate(std::int32_t date) const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    balance += account->currency()->convertAmount(account->GetRunningBalanceBeforeDate(date),
                                                  target.get());
  }
  return balance;
}

double ZELMAccountSummary::GetRunningBalanceThroughDate(std::int32_t date) const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    balance += account->currency()->convertAmount(account->GetRunningBalanceThroughDate(date),
                                                  target.get());
  }
  return balance;
}

// ---- The report ----

ZELMPeriodSubtotal ZELMAccountSummary::SubtotalEntries(const EntryList& entries,
                                                       LocalTime startDate,
                                                       LocalTime endDate) const {
  Computation computation(*this);
  ZELMPeriodSubtotal period =
      computation.Subtotal(entries.data(), entries.data() + entries.size(), startDate, endDate);
  period.startBalance =
      RoundNearZeroValue(GetRunningBalanceBeforeDate(NSCalendarDateToDateNumber(startDate)));
  period.endBalance =
      RoundNearZeroValue(GetRunningBalanceThroughDate(NSCalendarDateToDateNumber(endDate)));
  return period;
}

ZELMSummaryReport ZELMAccountSummary::Summary() {
  ZELMSummaryReport report;
  updateDateRange();

  // The entries kept are the debits, then the deposits, as shown, dated within the range,
  // that pass every one of these conditions.
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  const auto add = [&](std::int32_t category, std::int32_t qualifier, plist::Value data) {
    group->addConditionWithCategory(category, kConditionKeepsMatches, qualifier, std::move(data));
  };
  const std::pair<std::int32_t, std::int32_t> flags[] = {
      {kConditionCleared, showResolved_},
      {kConditionTaxDeductible, showTaxDeductible_},
      {kConditionCheck, showChecks_}};
  for (const auto& [category, choice] : flags) {
    if (choice == 0 || choice == 1) add(category, kFlagIsSet, plist::Value(choice == 0));
  }
  if (filter_) {
    const plist::Value text(filterData_);
    switch (filterType_) {
      case 0:
        add(kConditionGeneral, kTextContains, text);
        break;
      case 1:
        add(kConditionType, kTextContains, text);
        break;
      case 2:
        add(kConditionDescription, kTextContains, text);
        break;
      case 3:
        add(kConditionToFrom, kTextContains, text);
        add(kConditionCategory, kTextContains, text);
        break;
      case 4:
        add(kConditionCategory, kTextContains, text);
        break;
      case 10:
        add(kConditionSplitDescription, kTextContains, text);
        break;
      case 12:
        add(kConditionSplitCategory, kTextContains, text);
        break;
      case 20:
        add(kConditionNotes, kTextContains, text);
        break;
      default:
        break;
    }
  }

  // The entries of a period are a run of the date-sorted records: its ends are found by
  // binary search instead of scanning all of them for every period.
  Computation computation(*this);
  computation.Select(entries_, showDebits_, showDeposits_, startDate_, endDate_,
                     group->conditions().empty() ? nullptr : group.get());
  const BalanceIndex balances(accounts_, computation.target(), startDate_, endDate_);
  const auto periods = Periods(subtotalPeriodStyle_, startDate_, endDate_);
  report.subtotals.reserve(periods.size());
  for (const auto& [firstDay, lastDay] : periods) {
    const std::int32_t first = platform::DateNumberFromDay(firstDay);
    const std::int32_t last = platform::DateNumberFromDay(lastDay);
    ZELMPeriodSubtotal period = computation.Period(
        first, last, MidnightOf(firstDay), MidnightOf(lastDay) + kDay - std::chrono::seconds(1));
    period.startBalance = RoundNearZeroValue(balances.BeforeDate(first));
    period.endBalance = RoundNearZeroValue(balances.ThroughDate(last));
    report.subtotals.push_back(std::move(period));
  }

  for (const ZELMPeriodSubtotal& period : report.subtotals) {
    AddTo(report.total, period.total);
    report.entryCount += period.entryCount;
    AddTo(report.debitsTotal, period.debitsTotal);
    AddTo(report.depositsTotal, period.depositsTotal);
    AddTo(report.resolvedTotal, period.resolvedTotal);
    AddTo(report.unresolvedTotal, period.unresolvedTotal);
    AddTo(report.taxableTotal, period.taxableTotal);
    AddTo(report.taxDeductibleTotal, period.taxDeductibleTotal);
    MergeRows(period.descriptionsSubtotals, report.descriptionsSubtotals);
    MergeRows(period.typesSubtotals, report.typesSubtotals);
    MergeRows(period.toFromSubtotals, report.toFromSubtotals);
    processOverallSummaryCategorySubtotals(period.categoriesSubtotals, std::nullopt,
                                           report.categoriesSubtotals);
  }
  report.startDate = DateNumberToNSCalendarDate(startDate_);
  report.endDate = DateNumberToNSCalendarDate(endDate_);
  report.startBalance = RoundNearZeroValue(balances.RangeStart());
  report.endBalance = RoundNearZeroValue(balances.RangeEnd());
  return report;
}

void ZELMAccountSummary::Refresh() {
  summaryDictionary_.reset();
  summaryDictionary_ = Summary();
}

// ---- Category subtotals ----

std::vector<const ZELMCategorySubtotal*>
ZELMAccountSummary::allCategorySubtotalsForCategorySubtotals(
    const ZELMCategorySubtotals* categorySubtotals) {
  std::vector<const ZELMCategorySubtotal*> all;
  if (categorySubtotals == nullptr) return all;
  const auto visit = [&all](const auto& self, const ZELMCategorySubtotals& nodes) -> void {
    for (const ZELMCategorySubtotal& node : nodes) {
      all.push_back(&node);
      self(self, node.children);
    }
  };
  visit(visit, *categorySubtotals);
  return all;
}

void ZELMAccountSummary::processOverallSummaryCategorySubtotals(
    const ZELMCategorySubtotals& categorySubtotals, std::optional<std::string_view> parentName,
    ZELMCategorySubtotals& overallCategorySubtotals) {
  for (const ZELMCategorySubtotal& node : categorySubtotals) {
    std::string path =
        parentName ? std::string(*parentName) + ":" + node.subtotalName : node.subtotalName;
    ZELMCategorySubtotal& overall =
        ZELMAccountSummary_AddCategorySubtotalWithName(overallCategorySubtotals, path);
    AddTo(overall.amount, node.amount);
    AddTo(overall.debits, node.debits);
    AddTo(overall.deposits, node.deposits);
    processOverallSummaryCategorySubtotals(node.children, path, overallCategorySubtotals);
  }
}

std::shared_ptr<ZELMAccountEntryCategory> ZELMAccountSummary_CategoryWithNumber(
    const ZELMAccountSummary::CategoryList* categories, std::int32_t number) {
  if (categories == nullptr) return nullptr;
  for (const auto& category : *categories) {
    if (category != nullptr && category->number() == number) return category;
  }
  return nullptr;
}

ZELMCategorySubtotal& ZELMAccountSummary_AddCategorySubtotalWithName(
    ZELMCategorySubtotals& categorySubtotals, std::string_view name) {
  ZELMCategorySubtotals* level = &categorySubtotals;
  ZELMCategorySubtotal* node = nullptr;
  for (const std::uint32_t position : NodePositions(categorySubtotals, name)) {
    node = &(*level)[position];
    level = &node->children;
  }
  return *node;  // a path has at least one component
}

const ZELMCategorySubtotal* ZELMAccountSummary_CategorySubtotalWithName(
    const ZELMCategorySubtotals& categorySubtotals, std::string_view name) {
  const ZELMCategorySubtotals* level = &categorySubtotals;
  const ZELMCategorySubtotal* node = nullptr;
  for (const std::string_view component : Components(name)) {
    const auto it = std::find_if(level->begin(), level->end(), [&](const auto& candidate) {
      return platform::CaseInsensitiveEqual(candidate.subtotalName, component);
    });
    if (it == level->end()) return nullptr;
    node = &*it;
    level = &node->children;
  }
  return node;
}

}  // namespace folvant
