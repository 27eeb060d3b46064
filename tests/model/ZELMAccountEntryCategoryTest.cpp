#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "folvant/model/LVCategoryFormatter.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMEditingAccountEntryCategory.h"

namespace folvant {
namespace {

using Category = ZELMAccountEntryCategory;
using CategoryPtr = std::shared_ptr<Category>;

CategoryPtr Make(const std::string& name, std::int32_t number = 0) {
  auto category = std::make_shared<Category>();
  category->setName(name);
  category->setNumber(number);
  return category;
}

using NameList = std::vector<std::string>;

NameList Names(const std::vector<CategoryPtr>& categories) {
  NameList names;
  for (const auto& c : categories) names.push_back(c->name());
  return names;
}

// Auto (Fuel (Diesel), Repairs), Food.
struct Tree {
  CategoryPtr root = Make("Root");
  CategoryPtr autos = Make("Auto", 1);
  CategoryPtr fuel = Make("Fuel", 2);
  CategoryPtr diesel = Make("Diesel", 3);
  CategoryPtr repairs = Make("Repairs", 4);
  CategoryPtr food = Make("Food", 5);
  Tree() {
    root->addChild(food);
    root->addChild(autos);
    autos->addChild(repairs);
    autos->addChild(fuel);
    fuel->addChild(diesel);
  }
};

TEST(ZELMAccountEntryCategory, ChildrenStaySortedAndMoveBetweenParents) {
  auto parent = Make("P");
  parent->addChild(Make("food"));
  parent->addChild(Make("Zoo"));
  parent->addChild(Make("Auto"));
  EXPECT_EQ(Names(parent->children()), (NameList{"Auto", "food", "Zoo"}));

  // Inserting at the front still ends in name order. Ignored: no child, a negative index, an
  // index beyond the count.
  auto zoo2 = Make("Zulu");
  parent->insertChild(zoo2, 0);
  parent->insertChild(nullptr, 0);
  parent->insertChild(Make("X"), -1);
  parent->insertChild(Make("Y"), 5);
  EXPECT_EQ(Names(parent->children()), (NameList{"Auto", "food", "Zoo", "Zulu"}));

  // Adding to another parent takes the child away from its former one.
  auto other = Make("Other");
  other->addChild(zoo2);
  EXPECT_EQ(zoo2->parent(), other.get());
  EXPECT_EQ(Names(parent->children()), (NameList{"Auto", "food", "Zoo"}));

  // Added again to its own parent, a child leaves the list (both occurrences are removed)
  // while still naming that parent.
  other->addChild(zoo2);
  EXPECT_TRUE(other->children().empty());
  EXPECT_EQ(zoo2->parent(), other.get());
}

TEST(ZELMAccountEntryCategory, RemovingKeepsTheParentReference) {
  Tree t;
  t.autos->removeChildAtIndex(2);      // ignored
  t.autos->removeChild(t.food.get());  // not a child of Auto: ignored
  t.autos->removeChildAtIndex(1);
  t.autos->removeChild(t.fuel.get());
  EXPECT_TRUE(t.autos->children().empty());
  EXPECT_EQ(t.fuel->fullName(), "Root:Auto:Fuel");
}

TEST(ZELMAccountEntryCategory, NamesAndLookups) {
  Tree t;
  EXPECT_EQ(t.diesel->fullName(), "Root:Auto:Fuel:Diesel");
  EXPECT_EQ(t.diesel->parents(),
            (std::vector<Category*>{t.root.get(), t.autos.get(), t.fuel.get()}));
  EXPECT_TRUE(t.root->parents().empty());

  EXPECT_EQ(Names(t.root->allChildren()), (NameList{"Auto", "Fuel", "Diesel", "Repairs", "Food"}));
  EXPECT_EQ(t.root->childWithName("FOOD"), t.food);
  EXPECT_EQ(t.root->childWithName("Fuel"), nullptr);  // not a direct child
  EXPECT_EQ(t.root->childWithName(std::nullopt), nullptr);

  EXPECT_EQ(t.autos->childWithFullName("ROOT:auto:fuel"), t.fuel);
  EXPECT_EQ(t.autos->childWithFullName("root:AUTO"), t.autos);  // the receiver itself
  EXPECT_EQ(t.autos->childWithFullName("ROOT:Auto:Fuel:diesel"), t.diesel);
  EXPECT_EQ(t.autos->childWithFullName("Fuel"), nullptr);
  // A top-level category's full name is its own name.
  auto top = Make("Auto");
  top->addChild(Make("Fuel"));
  EXPECT_EQ(top->childWithFullName("AUTO:fuel")->fullName(), "Auto:Fuel");
}

TEST(ZELMAccountEntryCategory, SortChildrenRecursesAfterRenames) {
  Tree t;
  t.fuel->addChild(Make("Gas"));
  t.diesel->setName("zz");
  t.fuel->children()[1]->setName("aa");  // Gas
  t.fuel->setName("Zfuel");
  t.repairs->setName(std::nullopt);  // ignored
  t.root->sortChildren();
  EXPECT_EQ(Names(t.autos->children()), (NameList{"Repairs", "Zfuel"}));
  EXPECT_EQ(Names(t.fuel->children()), (NameList{"aa", "zz"}));
}

TEST(ZELMAccountEntryCategory, StoredFormAndCopies) {
  Tree t;
  const plist::Dictionary stored = t.autos->asDictionary();
  auto back = std::make_shared<Category>(&stored);
  EXPECT_EQ(back->asDictionary(), stored);
  EXPECT_EQ(back->childWithFullName("Auto:Fuel:Diesel")->number(), 3);

  EXPECT_EQ(t.diesel->asDictionary(),
            (plist::Dictionary{{"name", "Diesel"}, {"number", 3}, {"children", plist::Array{}}}));

  // No "number" reads as 0 (a fresh category has -1); children that are not dictionaries
  // are skipped and the rest sorted; the parent comes from the caller.
  const plist::Dictionary partial{
      {"name", "Food"},
      {"children", plist::Array{plist::Dictionary{{"name", "Wine"}, {"number", 9}}, 17,
                                plist::Dictionary{{"name", "Bread"}}}}};
  Category parent;
  auto food = std::make_shared<Category>(&partial, &parent);
  EXPECT_EQ(Category().number(), -1);
  EXPECT_EQ(food->number(), 0);
  EXPECT_EQ(food->parent(), &parent);
  EXPECT_EQ(Names(food->children()), (NameList{"Bread", "Wine"}));
  EXPECT_EQ(food->children()[0]->parent(), food.get());

  // copy() is a plain, parentless deep copy.
  auto copy = t.fuel->copy();
  EXPECT_EQ(copy->asDictionary(), t.fuel->asDictionary());
  EXPECT_EQ(copy->children()[0]->fullName(), "Fuel:Diesel");  // no parent above the copy
}

TEST(ZELMEditingAccountEntryCategory, ReadsEditingChildrenAndCopiesAsPlain) {
  Tree t;
  const plist::Dictionary stored = t.autos->asDictionary();
  auto editing = std::make_shared<ZELMEditingAccountEntryCategory>(&stored);
  for (const auto& child : editing->allChildren()) {
    EXPECT_NE(std::dynamic_pointer_cast<ZELMEditingAccountEntryCategory>(child), nullptr)
        << child->fullName();
  }
  editing->setInUse(true);
  EXPECT_EQ(editing->asDictionary(), stored);  // the mark is not stored

  auto copy = editing->copy();
  EXPECT_EQ(std::dynamic_pointer_cast<ZELMEditingAccountEntryCategory>(copy), nullptr);
  EXPECT_EQ(std::dynamic_pointer_cast<ZELMEditingAccountEntryCategory>(copy->children()[0]),
            nullptr);
  EXPECT_EQ(copy->asDictionary(), stored);
}

TEST(LVCategoryFormatter, ShowsTheFullNameButAcceptsOnlyTheOwnName) {
  Tree t;
  LVCategoryFormatter formatter;
  EXPECT_EQ(formatter.getObjectValue("Fuel"), nullptr);  // no list
  formatter.setCategories({t.autos, t.fuel, t.diesel, t.food});

  EXPECT_EQ(formatter.stringForObjectValue(t.diesel.get()), "Root:Auto:Fuel:Diesel");
  EXPECT_EQ(formatter.stringForObjectValue(nullptr), "");
  EXPECT_EQ(formatter.getObjectValue("Fuel"), t.fuel);
  EXPECT_EQ(formatter.getObjectValue("fuel"), nullptr);  // exact, case included
  EXPECT_EQ(formatter.getObjectValue("Root:Auto:Fuel"), nullptr);

  const plist::Dictionary attributes{{"NSColor", "red"}};
  const AttributedText shown = formatter.attributedStringForObjectValue(t.fuel.get(), attributes);
  EXPECT_EQ(shown, (AttributedText{"Root:Auto:Fuel", attributes}));
}

TEST(ZELMAccountEntryType, StoredFormDefaultsAndNameOrder) {
  const plist::Dictionary check{
      {"name", "Check"}, {"isCheck", true}, {"isDeposit", false}, {"number", 4}};
  EXPECT_EQ(ZELMAccountEntryType(&check).asDictionary(), check);
  const plist::Dictionary empty;
  EXPECT_EQ(
      ZELMAccountEntryType(&empty).asDictionary(),
      (plist::Dictionary{{"name", ""}, {"isCheck", false}, {"isDeposit", false}, {"number", 0}}));

  ZELMAccountEntryType atm, upper;
  atm.SetName("atm");
  upper.SetName("ATM");
  upper.SetName(std::nullopt);
  EXPECT_EQ(atm.NameIsGreaterThan(ZELMAccountEntryType(&check)), -1);
  EXPECT_EQ(ZELMAccountEntryType(&check).NameIsGreaterThan(atm), 1);
  EXPECT_EQ(upper.NameIsGreaterThan(atm), 0);
}

}  // namespace
}  // namespace folvant
