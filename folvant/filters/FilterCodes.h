#pragma once

// The numbers that filters are saved with, each named once: what a condition tests and how,
// how a condition group joins its conditions, and the quick-filter settings of the register
// and reconcile views. The values are part of the saved files and never change.

#include <cstdint>

namespace folvant {

// ---- Conditions -----------------------------------------------------------------------------

// The field a condition tests (its "category").
inline constexpr std::int32_t kConditionDescription = 0;
inline constexpr std::int32_t kConditionDate = 1;
inline constexpr std::int32_t kConditionAmount = 2;
inline constexpr std::int32_t kConditionType = 3;
inline constexpr std::int32_t kConditionCheck = 4;
inline constexpr std::int32_t kConditionToFrom = 5;
inline constexpr std::int32_t kConditionCleared = 6;
inline constexpr std::int32_t kConditionTaxDeductible = 7;
inline constexpr std::int32_t kConditionCategory = 8;
inline constexpr std::int32_t kConditionVoid = 9;
inline constexpr std::int32_t kConditionCheckString = 10;
inline constexpr std::int32_t kConditionAmountString = 11;
inline constexpr std::int32_t kConditionSplitCategory = 20;
inline constexpr std::int32_t kConditionSplitDescription = 21;
inline constexpr std::int32_t kConditionNotes = 30;
inline constexpr std::int32_t kConditionGeneral = 50;

// A condition's logic: keep the entries that match, or the ones that do not.
inline constexpr std::int32_t kConditionKeepsMatches = 1;
inline constexpr std::int32_t kConditionKeepsOthers = 0;

// Text qualifiers; all ignore case and nothing else.
inline constexpr std::int32_t kTextIsEqualTo = 1;
inline constexpr std::int32_t kTextContains = 6;
inline constexpr std::int32_t kTextStartsWith = 8;
inline constexpr std::int32_t kTextEndsWith = 9;

// The one qualifier of the yes/no fields: the entry's flag equals the data's boolean value.
inline constexpr std::int32_t kFlagIsSet = 1;

// Amount qualifiers.
inline constexpr std::int32_t kAmountIs = 1;
inline constexpr std::int32_t kAmountIsMoreThan = 3;
inline constexpr std::int32_t kAmountIsLessThan = 4;

// Date qualifiers that compare with the data's date numbers.
inline constexpr std::int32_t kDateBefore = 0;
inline constexpr std::int32_t kDateExactly = 1;
inline constexpr std::int32_t kDateAfter = 2;
inline constexpr std::int32_t kDateBetween = 70;

// The relative date qualifiers are a unit × 10 + a variant.
inline constexpr std::int32_t kDateUnitDay = 2;
inline constexpr std::int32_t kDateUnitWeek = 3;
inline constexpr std::int32_t kDateUnitMonth = 4;
inline constexpr std::int32_t kDateUnitQuarter = 5;
inline constexpr std::int32_t kDateUnitYear = 6;
inline constexpr std::int32_t kDateInLast = 0;      // the last N units, through this one
inline constexpr std::int32_t kDateInNext = 1;      // the next N units, from this one
inline constexpr std::int32_t kDateBetweenAgo = 2;  // between N and M units ago
inline constexpr std::int32_t kDateDuringThis = 3;
inline constexpr std::int32_t kDateDuringPrevious = 4;
inline constexpr std::int32_t kDateThisToDate = 5;

constexpr std::int32_t RelativeDateQualifier(std::int32_t unit, std::int32_t variant) {
  return unit * 10 + variant;
}
// The unit and variant of a relative date qualifier (for qualifiers of 0 or more).
constexpr std::int32_t RelativeDateUnit(std::int32_t qualifier) { return qualifier / 10; }
constexpr std::int32_t RelativeDateVariant(std::int32_t qualifier) { return qualifier % 10; }

inline constexpr std::int32_t kDateToday = RelativeDateQualifier(kDateUnitDay, kDateDuringThis);
inline constexpr std::int32_t kDateYesterday =
    RelativeDateQualifier(kDateUnitDay, kDateDuringPrevious);
inline constexpr std::int32_t kDateInLastDays = RelativeDateQualifier(kDateUnitDay, kDateInLast);
inline constexpr std::int32_t kDateInNextDays = RelativeDateQualifier(kDateUnitDay, kDateInNext);
inline constexpr std::int32_t kDateDaysAgo = RelativeDateQualifier(kDateUnitDay, kDateBetweenAgo);
inline constexpr std::int32_t kDateInLastWeeks = RelativeDateQualifier(kDateUnitWeek, kDateInLast);
inline constexpr std::int32_t kDateInNextWeeks = RelativeDateQualifier(kDateUnitWeek, kDateInNext);
inline constexpr std::int32_t kDateWeeksAgo = RelativeDateQualifier(kDateUnitWeek, kDateBetweenAgo);
inline constexpr std::int32_t kDateThisWeek = RelativeDateQualifier(kDateUnitWeek, kDateDuringThis);
inline constexpr std::int32_t kDateLastWeek =
    RelativeDateQualifier(kDateUnitWeek, kDateDuringPrevious);
inline constexpr std::int32_t kDateWeekToDate =
    RelativeDateQualifier(kDateUnitWeek, kDateThisToDate);
inline constexpr std::int32_t kDateInLastMonths =
    RelativeDateQualifier(kDateUnitMonth, kDateInLast);
inline constexpr std::int32_t kDateInNextMonths =
    RelativeDateQualifier(kDateUnitMonth, kDateInNext);
inline constexpr std::int32_t kDateMonthsAgo =
    RelativeDateQualifier(kDateUnitMonth, kDateBetweenAgo);
inline constexpr std::int32_t kDateThisMonth =
    RelativeDateQualifier(kDateUnitMonth, kDateDuringThis);
inline constexpr std::int32_t kDateLastMonth =
    RelativeDateQualifier(kDateUnitMonth, kDateDuringPrevious);
inline constexpr std::int32_t kDateMonthToDate =
    RelativeDateQualifier(kDateUnitMonth, kDateThisToDate);
inline constexpr std::int32_t kDateInLastQuarters =
    RelativeDateQualifier(kDateUnitQuarter, kDateInLast);
inline constexpr std::int32_t kDateInNextQuarters =
    RelativeDateQualifier(kDateUnitQuarter, kDateInNext);
inline constexpr std::int32_t kDateQuartersAgo =
    RelativeDateQualifier(kDateUnitQuarter, kDateBetweenAgo);
inline constexpr std::int32_t kDateThisQuarter =
    RelativeDateQualifier(kDateUnitQuarter, kDateDuringThis);
inline constexpr std::int32_t kDateLastQuarter =
    RelativeDateQualifier(kDateUnitQuarter, kDateDuringPrevious);
inline constexpr std::int32_t kDateQuarterToDate =
    RelativeDateQualifier(kDateUnitQuarter, kDateThisToDate);
inline constexpr std::int32_t kDateInLastYears = RelativeDateQualifier(kDateUnitYear, kDateInLast);
inline constexpr std::int32_t kDateInNextYears = RelativeDateQualifier(kDateUnitYear, kDateInNext);
inline constexpr std::int32_t kDateYearsAgo = RelativeDateQualifier(kDateUnitYear, kDateBetweenAgo);
inline constexpr std::int32_t kDateThisYear = RelativeDateQualifier(kDateUnitYear, kDateDuringThis);
inline constexpr std::int32_t kDateLastYear =
    RelativeDateQualifier(kDateUnitYear, kDateDuringPrevious);
inline constexpr std::int32_t kDateYearToDate =
    RelativeDateQualifier(kDateUnitYear, kDateThisToDate);

// ---- Condition groups -----------------------------------------------------------------------

// How a group joins the groups before it in a filter.
inline constexpr std::int32_t kGroupNarrows = 0;
inline constexpr std::int32_t kGroupAdds = 1;
// How a group joins its own conditions.
inline constexpr std::int32_t kGroupMatchesAny = 0;
inline constexpr std::int32_t kGroupMatchesAll = 1;

// ---- The views' quick filters ---------------------------------------------------------------

// The views that have quick-filter settings.
inline constexpr std::int32_t kViewRegister = 1;
inline constexpr std::int32_t kViewReconcile = 2;

// The field the view's search text looks in (its "filter type"); any other number searches
// every text field, as General does.
inline constexpr std::int32_t kSearchGeneral = 0;
inline constexpr std::int32_t kSearchDescription = 10;
inline constexpr std::int32_t kSearchToFrom = 11;
inline constexpr std::int32_t kSearchType = 12;
inline constexpr std::int32_t kSearchNotes = 13;
inline constexpr std::int32_t kSearchAmount = 14;
inline constexpr std::int32_t kSearchCheckNumber = 15;
inline constexpr std::int32_t kSearchCategory = 16;
inline constexpr std::int32_t kSearchSplitDescription = 71;
inline constexpr std::int32_t kSearchSplitCategory = 72;

// The view's date range (its "date filter type"); any other number sets no date limit.
inline constexpr std::int32_t kShowThroughToday = 20;  // from the first entry through today
inline constexpr std::int32_t kShowToday = 21;
inline constexpr std::int32_t kShowYesterday = 22;
inline constexpr std::int32_t kShowThisWeek = 30;
inline constexpr std::int32_t kShowThisMonth = 31;
inline constexpr std::int32_t kShowThisQuarter = 32;
inline constexpr std::int32_t kShowThisYear = 33;
inline constexpr std::int32_t kShowLastWeek = 40;
inline constexpr std::int32_t kShowLastMonth = 41;
inline constexpr std::int32_t kShowLastQuarter = 42;
inline constexpr std::int32_t kShowLastYear = 43;
inline constexpr std::int32_t kShowWeekToDate = 50;
inline constexpr std::int32_t kShowMonthToDate = 51;
inline constexpr std::int32_t kShowQuarterToDate = 52;
inline constexpr std::int32_t kShowYearToDate = 53;
inline constexpr std::int32_t kShowAllDates = 60;     // from the first entry to the last
inline constexpr std::int32_t kShowCustomDates = 61;  // the stored start and end days

// The view's resolved setting; any other number shows all.
inline constexpr std::int32_t kShowResolvedOnly = 80;
inline constexpr std::int32_t kShowUnresolvedOnly = 81;
inline constexpr std::int32_t kShowResolvedAndUnresolved = 82;

// The view's tax-deductible setting; any other number shows all.
inline constexpr std::int32_t kShowTaxDeductibleOnly = 90;
inline constexpr std::int32_t kShowNotTaxDeductibleOnly = 91;
inline constexpr std::int32_t kShowTaxDeductibleAndNot = 92;

}  // namespace folvant
