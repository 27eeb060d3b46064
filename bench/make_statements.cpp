// Writes generated bank statements of N transactions, for timing the importers (import_bench,
// scripts/bench-import). Each N gives three files in DIR holding the same transactions:
//
//   stmt-N-v1.ofx   OFX 1.02: the KEY:VALUE header (CHARSET:1252), then SGML with CRLF line
//                   ends whose data elements are not closed ("<TRNAMT>-12.50") and whose
//                   aggregates are
//   stmt-N-v2.ofx   OFX 2.11: XML declaration and OFX processing instruction, every element
//                   closed, LF line ends
//   stmt-N.qif      QIF: "!Type:Bank", records of D (07/14/2026), T, P, M and N lines ended by
//                   "^", CRLF line ends
//
// One checking statement in US dollars: transactions in date order over ten years, debits and
// credits with cents, a unique bank identifier (FITID) each, a payee on every one, a memo on
// most, a check number on the checks. The output is the same on every run.
//
//   make_statements DIR N...
#include <chrono>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchRandom.h"

namespace {

using bench::Random;

using namespace std::chrono;

constexpr sys_days kFirstDay{2016y / January / 4};
constexpr sys_days kLastDay{2026y / July / 14};

struct Transaction {
  const char* type;  // TRNTYPE
  year_month_day date;
  std::int64_t cents;
  std::string fitID;
  std::uint32_t check = 0;  // 0: not a check
  std::string_view name;
  std::string_view memo;  // empty: no memo
};

// Payees of at most 32 characters (the OFX limit of NAME); "&" is written escaped in OFX.
constexpr std::string_view kPayees[] = {"TRADER JOE'S #552",
                                        "SHELL OIL 5744",
                                        "AMAZON MKTPLACE PMTS",
                                        "CITY OF SPRINGFIELD UT",
                                        "COMCAST CABLE",
                                        "STARBUCKS STORE 10233",
                                        "WHOLE FOODS MKT",
                                        "CVS/PHARMACY #0412",
                                        "HOME DEPOT 4410",
                                        "NETFLIX.COM",
                                        "SAFEWAY 1987",
                                        "CHEVRON 0091234",
                                        "BARNES & NOBLE #2231",
                                        "SPOTIFY USA",
                                        "UBER TRIP",
                                        "DELTA AIR LINES",
                                        "VERIZON WIRELESS",
                                        "COSTCO WHSE #0482",
                                        "JOHN'S BARBER SHOP",
                                        "AT&T PAYMENT",
                                        "TARGET T-1320",
                                        "LANDLORD PROPERTIES LLC",
                                        "DR. OKAFOR DDS",
                                        "PETCO 1122",
                                        "GEICO AUTO",
                                        "MUNICIPAL PARKING",
                                        "WALGREENS #7781",
                                        "APPLE.COM/BILL",
                                        "PANERA BREAD #601",
                                        "ACE HARDWARE"};
constexpr std::string_view kDepositors[] = {"ACME CORP PAYROLL", "IRS TREAS 310",
                                            "INTEREST PAYMENT",  "MOBILE DEPOSIT",
                                            "VENMO CASHOUT",     "ZELLE FROM J SMITH"};
constexpr std::string_view kMemos[] = {"POS PURCHASE",
                                       "DEBIT CARD PURCHASE XXXX4421",
                                       "RECURRING PAYMENT",
                                       "ONLINE TRANSFER REF #IB0XK2L",
                                       "ATM WITHDRAWAL 1200 MAIN ST",
                                       "ACH DEBIT",
                                       "CHECKCARD 0714 & TIP",
                                       "DIRECT DEPOSIT",
                                       "BILL PAY",
                                       "CONTACTLESS"};

std::vector<Transaction> MakeTransactions(std::uint64_t count) {
  Random random(20260714u);
  std::vector<Transaction> transactions;
  transactions.reserve(count);
  const std::int64_t span = (kLastDay - kFirstDay).count();
  std::uint32_t check = 1001;
  for (std::uint64_t i = 0; i < count; ++i) {
    Transaction t;
    // Evenly spread over the years, so a larger statement is only denser.
    const auto offset = static_cast<std::int64_t>(
        count > 1 ? span * static_cast<std::int64_t>(i) / static_cast<std::int64_t>(count - 1) : 0);
    t.date = year_month_day{kFirstDay + days{offset}};
    const std::uint32_t roll = random.Below(100);
    if (roll < 8) {
      t.type = "CHECK";
      t.check = check++;
      t.cents = -static_cast<std::int64_t>(2000 + random.Below(150000));
      t.name = "CHECK";
    } else if (roll < 20) {
      static const char* const kCreditTypes[] = {"CREDIT", "DEP", "DIRECTDEP", "INT", "XFER"};
      t.type = kCreditTypes[random.Below(5)];
      t.cents = static_cast<std::int64_t>(100 + random.Below(400000));
      t.name = kDepositors[random.Below(std::size(kDepositors))];
    } else {
      static const char* const kDebitTypes[] = {"DEBIT", "POS", "ATM", "PAYMENT", "FEE"};
      t.type = kDebitTypes[random.Below(5)];
      t.cents = -static_cast<std::int64_t>(1 + random.Below(25000));
      t.name = kPayees[random.Below(std::size(kPayees))];
    }
    if (random.Below(4) != 0) t.memo = kMemos[random.Below(std::size(kMemos))];
    char fitID[40];
    std::snprintf(fitID, sizeof fitID, "%04d%02u%02u%010" PRIu64, static_cast<int>(t.date.year()),
                  static_cast<unsigned>(t.date.month()), static_cast<unsigned>(t.date.day()),
                  i + 1);
    t.fitID = fitID;
    transactions.push_back(std::move(t));
  }
  return transactions;
}

// "-12.50" from -1250.
std::string AmountText(std::int64_t cents) {
  const std::int64_t magnitude = cents < 0 ? -cents : cents;
  char text[32];
  std::snprintf(text, sizeof text, "%s%" PRId64 ".%02" PRId64, cents < 0 ? "-" : "",
                magnitude / 100, magnitude % 100);
  return text;
}

// "20260714".
std::string OFXDay(year_month_day date) {
  char text[16];
  std::snprintf(text, sizeof text, "%04d%02u%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text;
}

// "07/14/2026".
std::string QIFDay(year_month_day date) {
  char text[16];
  std::snprintf(text, sizeof text, "%02u/%02u/%04d", static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(date.year()));
  return text;
}

// Text with "&", "<" and ">" escaped, as both OFX forms need.
std::string Escaped(std::string_view text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// Writes an OFX body. `sgml`: data elements are left open and lines end in CRLF.
class OFXWriter {
 public:
  OFXWriter(std::string& out, bool sgml) : out_(out), sgml_(sgml) {}
  void Open(std::string_view name) { out_.append("<").append(name).append(">").append(End()); }
  void Close(std::string_view name) { out_.append("</").append(name).append(">").append(End()); }
  void Data(std::string_view name, std::string_view value) {
    out_.append("<").append(name).append(">").append(value);
    if (!sgml_) out_.append("</").append(name).append(">");
    out_.append(End());
  }

 private:
  std::string_view End() const { return sgml_ ? "\r\n" : "\n"; }
  std::string& out_;
  bool sgml_;
};

std::string OFXText(const std::vector<Transaction>& transactions, bool sgml) {
  std::string out;
  out.reserve(transactions.size() * 240 + 2048);
  if (sgml) {
    out +=
        "OFXHEADER:100\r\nDATA:OFXSGML\r\nVERSION:102\r\nSECURITY:NONE\r\nENCODING:USASCII\r\n"
        "CHARSET:1252\r\nCOMPRESSION:NONE\r\nOLDFILEUID:NONE\r\nNEWFILEUID:NONE\r\n\r\n";
  } else {
    out +=
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n"
        "<?OFX OFXHEADER=\"200\" VERSION=\"211\" SECURITY=\"NONE\" OLDFILEUID=\"NONE\" "
        "NEWFILEUID=\"NONE\"?>\n";
  }
  const std::string first =
      transactions.empty() ? OFXDay(year_month_day{kFirstDay}) : OFXDay(transactions.front().date);
  const std::string last =
      transactions.empty() ? OFXDay(year_month_day{kLastDay}) : OFXDay(transactions.back().date);
  OFXWriter w(out, sgml);
  w.Open("OFX");
  w.Open("SIGNONMSGSRSV1");
  w.Open("SONRS");
  w.Open("STATUS");
  w.Data("CODE", "0");
  w.Data("SEVERITY", "INFO");
  w.Close("STATUS");
  w.Data("DTSERVER", last + "120000[-5:EST]");
  w.Data("LANGUAGE", "ENG");
  w.Close("SONRS");
  w.Close("SIGNONMSGSRSV1");
  w.Open("BANKMSGSRSV1");
  w.Open("STMTTRNRS");
  w.Data("TRNUID", "1");
  w.Open("STATUS");
  w.Data("CODE", "0");
  w.Data("SEVERITY", "INFO");
  w.Close("STATUS");
  w.Open("STMTRS");
  w.Data("CURDEF", "USD");
  w.Open("BANKACCTFROM");
  w.Data("BANKID", "121000248");
  w.Data("ACCTID", "4417092235");
  w.Data("ACCTTYPE", "CHECKING");
  w.Close("BANKACCTFROM");
  w.Open("BANKTRANLIST");
  w.Data("DTSTART", first + "000000[-5:EST]");
  w.Data("DTEND", last + "235959[-5:EST]");
  std::int64_t balance = 250000;
  for (const Transaction& t : transactions) {
    balance += t.cents;
    w.Open("STMTTRN");
    w.Data("TRNTYPE", t.type);
    w.Data("DTPOSTED", OFXDay(t.date) + "120000[-5:EST]");
    w.Data("TRNAMT", AmountText(t.cents));
    w.Data("FITID", t.fitID);
    if (t.check != 0) w.Data("CHECKNUM", std::to_string(t.check));
    w.Data("NAME", t.check != 0 ? "CHECK " + std::to_string(t.check) : Escaped(t.name));
    if (!t.memo.empty()) w.Data("MEMO", Escaped(t.memo));
    w.Close("STMTTRN");
  }
  w.Close("BANKTRANLIST");
  w.Open("LEDGERBAL");
  w.Data("BALAMT", AmountText(balance));
  w.Data("DTASOF", last + "120000[-5:EST]");
  w.Close("LEDGERBAL");
  w.Close("STMTRS");
  w.Close("STMTTRNRS");
  w.Close("BANKMSGSRSV1");
  w.Close("OFX");
  return out;
}

std::string QIFText(const std::vector<Transaction>& transactions) {
  std::string out;
  out.reserve(transactions.size() * 100 + 64);
  out += "!Type:Bank\r\n";
  for (const Transaction& t : transactions) {
    out.append("D").append(QIFDay(t.date)).append("\r\n");
    out.append("T").append(AmountText(t.cents)).append("\r\n");
    out.append("P").append(t.check != 0 ? "CHECK " + std::to_string(t.check) : std::string(t.name));
    out.append("\r\n");
    if (!t.memo.empty()) out.append("M").append(t.memo).append("\r\n");
    if (t.check != 0) out.append("N").append(std::to_string(t.check)).append("\r\n");
    out.append("^\r\n");
  }
  return out;
}

bool WriteFile(const std::string& path, const std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: make_statements DIR N...\n";
    return 2;
  }
  const std::string dir = argv[1];
  for (int i = 2; i < argc; ++i) {
    char* end = nullptr;
    const unsigned long long count = std::strtoull(argv[i], &end, 10);
    if (end == argv[i] || *end != '\0' || count == 0) {
      std::cerr << "make_statements: \"" << argv[i] << "\" is not a number of transactions\n";
      return 2;
    }
    const std::vector<Transaction> transactions = MakeTransactions(count);
    const std::string stem = dir + "/stmt-" + std::to_string(count);
    if (!WriteFile(stem + "-v1.ofx", OFXText(transactions, true)) ||
        !WriteFile(stem + "-v2.ofx", OFXText(transactions, false)) ||
        !WriteFile(stem + ".qif", QIFText(transactions))) {
      std::cerr << "make_statements: cannot write " << stem << ".*\n";
      return 1;
    }
  }
  return 0;
}
