// Importing into the book: round trips through the exported formats, the same file twice, and
// taking a batch back.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/book/Export.h"
#include "folvant/book/Import.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/LocalCalendar.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

// The fields of each row of a delimited export but its entry number and running balance, and
// without the opening row.
std::vector<std::string> RowsWithoutNumbers(const std::string& tsv) {
  std::vector<std::string> rows;
  std::vector<std::string> lines = Lines(tsv);
  for (std::size_t i = 2; i < lines.size(); ++i) {
    std::vector<std::string> fields;
    std::istringstream in(lines[i]);
    for (std::string field; std::getline(in, field, '\t');) fields.push_back(field);
    fields.resize(10);  // up to "Check #"
    std::string row;
    for (const std::string& f : fields) row += f + "|";
    rows.push_back(row);
  }
  return rows;
}

// The sample book, with its Checking account (splits, categories, resolved and void entries).
class ImportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    pin_ = platform::PinClock(platform::MakeLocalTime(2026, 7, 15, 12));
    base_ = testing::ScratchDir("folvant-import");
    fs::create_directories(base_);
    fs::copy(FOLVANT_SOURCE_DIR "/data/sample-book", base_ / "book", fs::copy_options::recursive);
    Book::OpenOptions options;
    options.access = Book::Access::kWrite;
    auto opened = Book::Open(base_ / "book", options);
    ASSERT_TRUE(opened) << opened.error().message;
    book_ = std::move(*opened);
  }
  void TearDown() override {
    book_.reset();
    fs::remove_all(base_);
    platform::PinClock(pin_);
  }

  std::string Export(const std::string& account, ExportFormat format) {
    ExportRequest request;
    request.account = account;
    request.format = format;
    auto exported = ExportAccount(*book_, request);
    EXPECT_TRUE(exported) << exported.error().message;
    return exported ? exported->bytes : std::string();
  }
  fs::path Write(const std::string& name, const std::string& bytes) {
    const fs::path path = base_ / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  ImportReview Apply(const std::string& account, const fs::path& file) {
    ImportRequest request;
    request.account = account;
    request.file = file;
    auto applied = ApplyImport(*book_, request);
    EXPECT_TRUE(applied) << applied.error().message;
    return applied ? *applied : ImportReview{};
  }

  std::optional<platform::LocalTime> pin_;
  fs::path base_;
  std::unique_ptr<Book> book_;
};

// The records of a QIF text, each its lines up to "^".
std::vector<std::vector<std::string>> Records(const std::string& qif) {
  std::vector<std::vector<std::string>> records(1);
  for (const std::string& line : Lines(qif)) {
    if (line == "^") {
      records.emplace_back();
    } else {
      records.back().push_back(line);
    }
  }
  return records;
}

TEST_F(ImportTest, QIFExportImportsAsTheSameRegister) {
  const std::string qif = Export("Checking", ExportFormat::kQIF);
  ASSERT_TRUE(book_->AddAccount("Copy"));
  const ImportReview review = Apply("Copy", Write("checking.qif", qif));
  EXPECT_EQ(review.counts.count(ImportStatus::kUnreadable), 0u);
  EXPECT_GT(review.added, 150u);
  // Written out again, the copy says what the original said, record for record (entries of
  // one day may come in another order): the original's opening is the copy's first entry.
  auto original = Records(qif), copy = Records(Export("Copy", ExportFormat::kQIF));
  ASSERT_EQ(copy.size(), original.size() + 1);
  ASSERT_GE(original.size(), 3u);
  std::vector<std::string> opening = original[1];
  opening.erase(opening.begin());  // "!Type:Bank"
  opening.insert(opening.begin() + 1, "P");
  opening.push_back("L");
  original.erase(original.begin(), original.begin() + 2);
  original.push_back(opening);
  copy.erase(copy.begin(), copy.begin() + 2);
  std::sort(original.begin(), original.end());
  std::sort(copy.begin(), copy.end());
  EXPECT_EQ(original, copy);

  // The same file again adds nothing.
  const ImportReview again = Apply("Copy", Write("checking.qif", qif));
  EXPECT_EQ(again.added, 0u);
  EXPECT_EQ(again.counts.at(ImportStatus::kDuplicate), review.added);
}

TEST_F(ImportTest, CSVExportImportsWithItsHeaderAsTheSameRegister) {
  const std::string csv = Export("Savings", ExportFormat::kCSV);
  ASSERT_TRUE(book_->AddAccount("Copy"));
  const ImportReview review = Apply("Copy", Write("savings.csv", csv));
  // The opening row comes in as an entry of the starting balance.
  auto savings = book_->FindAccount("Savings");
  auto copy = book_->FindAccount("Copy");
  ASSERT_TRUE(savings && copy);
  EXPECT_DOUBLE_EQ((*copy)->GetBalance(), (*savings)->GetBalance());
  const std::vector<std::string> original = RowsWithoutNumbers(Export("Savings", ExportFormat::kTSV));
  std::vector<std::string> copied = RowsWithoutNumbers(Export("Copy", ExportFormat::kTSV));
  ASSERT_EQ(copied.size(), original.size() + 1);
  copied.erase(copied.begin());  // the starting balance
  EXPECT_EQ(original, copied);
}

TEST_F(ImportTest, UndoTakesBackABatchUnlessItWasEditedSince) {
  const std::string qif =
      "!Type:Bank\nD07/10/2026\nT-12.00\nPCorner Books\n^\nD07/11/2026\nT-8.00\nPBakery\n^\n";
  const double before = (*book_->FindAccount("Checking"))->GetBalance();
  const ImportReview review = Apply("Checking", Write("a.qif", qif));
  ASSERT_EQ(review.added, 2u);
  ASSERT_EQ(review.rows.size(), 2u);
  const std::int32_t first = review.rows[0].added.value();

  // An edited entry holds the batch.
  EntryFields change;
  change.description = "books for school";
  auto edited = EditEntry(*book_, "Checking", first, change);
  ASSERT_TRUE(edited) << edited.error().message;
  auto refused = UndoImport(*book_, "Checking");
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().message.find(std::to_string(first)), std::string::npos)
      << refused.error().message;
  change.description = "";
  ASSERT_TRUE(EditEntry(*book_, "Checking", first, change));

  auto undone = UndoImport(*book_, "Checking");
  ASSERT_TRUE(undone) << undone.error().message;
  EXPECT_EQ(undone->removed, 2u);
  EXPECT_DOUBLE_EQ((*book_->FindAccount("Checking"))->GetBalance(), before);
  auto history = ImportBatches(*book_, "Checking");
  ASSERT_TRUE(history);
  EXPECT_TRUE(history->batches.empty());
}

}  // namespace
}  // namespace folvant
