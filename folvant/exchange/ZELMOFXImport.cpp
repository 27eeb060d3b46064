#include "folvant/exchange/ZELMOFXImport.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "folvant/kit/BKXMLTreeAtPath.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Encodings.h"
#include "folvant/platform/Localized.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

using platform::StringEncoding;


Unexpected<OFXReadError> Refuse(std::string what) { return Unexpected<OFXReadError>{OFXReadError{std::move(what)}}; }

// The value of a header line "KEY:VALUE": after the key, blanks and line ends are skipped and the
// value runs to the next blank or line end.
std::string_view HeaderValue(std::string_view header, std::string_view key) {
  const std::size_t at = header.find(key);
  if (at == std::string_view::npos) return {};
  std::size_t i = at + key.size();
  while (i < header.size() && IsBlank(header[i])) ++i;
  std::size_t end = i;
  while (end < header.size() && !IsBlank(header[end])) ++end;
  return header.substr(i, end - i);
}

// The encoding a 1.x header names. ENCODING:UTF-8 and ENCODING:UNICODE decide alone; otherwise
// CHARSET gives ISO Latin-1 (ISO-8859-1, NONE) or a Windows code page; Windows-1252 when neither
// says anything usable.
StringEncoding EncodingOfHeader(std::string_view header) {
  const std::string_view encoding = HeaderValue(header, "ENCODING:");
  const std::string_view charset = HeaderValue(header, "CHARSET:");
  if (platform::CaseInsensitiveEqual(encoding, "UTF-8")) return platform::kUTF8StringEncoding;
  if (platform::CaseInsensitiveEqual(encoding, "UNICODE")) return platform::kUnicodeStringEncoding;
  if (!encoding.empty() && !charset.empty()) {
    if (platform::CaseInsensitiveEqual(charset, "ISO-8859-1") ||
        platform::CaseInsensitiveEqual(charset, "NONE")) {
      return platform::kISOLatin1StringEncoding;
    }
    const std::int32_t codepage = LeadingInteger(charset);
    if (codepage > 0) {
      const StringEncoding chosen =
          platform::WindowsCodepageToEncoding(static_cast<std::uint32_t>(codepage));
      if (chosen != platform::kNoEncoding) return chosen;
    }
  }
  return platform::kWindowsCP1252StringEncoding;
}

// The encoding an XML declaration names, for XML bytes that are not UTF-8: ISO Latin-1 or a
// Windows code page, else Windows-1252.
StringEncoding EncodingOfDeclaration(std::string_view bytes) {
  const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
  const std::size_t at = platform::CaseInsensitiveFind(declaration, "encoding=");
  if (at != std::string_view::npos) {
    std::string_view name = declaration.substr(at + 9);
    if (!name.empty() && (name.front() == '"' || name.front() == '\'')) name.remove_prefix(1);
    name = name.substr(0, name.find_first_of("\"' ?"));
    if (platform::CaseInsensitiveContains(name, "8859-1") ||
        platform::CaseInsensitiveEqual(name, "latin1")) {
      return platform::kISOLatin1StringEncoding;
    }
    const std::size_t digits = name.find_first_of("0123456789");
    if (digits != std::string_view::npos && (platform::CaseInsensitiveHasPrefix(name, "windows-") ||
                                             platform::CaseInsensitiveHasPrefix(name, "cp"))) {
      const StringEncoding chosen = platform::WindowsCodepageToEncoding(
          static_cast<std::uint32_t>(LeadingInteger(name.substr(digits))));
      if (chosen != platform::kNoEncoding) return chosen;
    }
  }
  return platform::kWindowsCP1252StringEncoding;
}

bool StartsWithUTF16Mark(std::string_view bytes) {
  return bytes.size() >= 2 && ((bytes[0] == '\xFE' && bytes[1] == '\xFF') ||
                               (bytes[0] == '\xFF' && bytes[1] == '\xFE'));
}

bool StartsWithUTF8Mark(std::string_view bytes) { return bytes.starts_with("\xEF\xBB\xBF"); }

// The element's single text child, or nothing (missing, empty, or holding other nodes).
std::optional<std::string_view> TextOf(const pugi::xml_node& node) {
  const pugi::xml_node child = node.first_child();
  if (!child || child.next_sibling()) return std::nullopt;
  if (child.type() != pugi::node_pcdata && child.type() != pugi::node_cdata) return std::nullopt;
  return std::string_view(child.value());
}

std::optional<std::string_view> TextAt(const pugi::xml_node& node, std::string_view path) {
  return TextOf(BKXMLTreeAtPath(node, path));
}

// All text children of an element joined, the elements among them left out; nothing when there
// is no text. Escaped characters ("&amp;") were resolved by the parser.
std::optional<std::string> JoinedTextAt(const pugi::xml_node& node, std::string_view path) {
  const pugi::xml_node element = BKXMLTreeAtPath(node, path);
  if (!element) return std::nullopt;
  std::string joined;
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) joined += child.value();
  }
  if (joined.empty()) return std::nullopt;
  return joined;
}

// How many children of `node` are elements named `name`; a list's records are counted before
// they are read, so the vector of a large statement is not moved as it grows.
std::size_t CountChildren(const pugi::xml_node& node, const char* name) {
  std::size_t count = 0;
  for (const pugi::xml_node child : node.children(name)) {
    (void)child;
    ++count;
  }
  return count;
}

// Balances the tags of a body whose data elements are closed: an end tag closes the aggregates
// still open inside its element, an end tag of no open element is dropped, and what is open at
// the end is closed. Linear in the text.
std::string BalanceTags(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 64);
  std::vector<std::string_view> open;
  std::unordered_map<std::string_view, std::size_t> openCount;
  auto closeTop = [&] {
    out.append("</").append(open.back()).push_back('>');
    --openCount[open.back()];
    open.pop_back();
  };
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t lt = text.find('<', i);
    if (lt == std::string_view::npos) {
      out.append(text.substr(i));
      break;
    }
    out.append(text.substr(i, lt - i));
    std::size_t gt = text.find('>', lt + 1);
    if (text.substr(lt).starts_with("<!--")) {
      const std::size_t end = text.find("-->", lt + 4);
      gt = end == std::string_view::npos ? end : end + 2;
    }
    if (gt == std::string_view::npos) {
      out.append(text.substr(lt));
      break;
    }
    const std::string_view tag = text.substr(lt + 1, gt - lt - 1);
    i = gt + 1;
    if (tag.starts_with('!') || tag.starts_with('?') || tag.ends_with('/')) {
      out.append(text.substr(lt, gt - lt + 1));
    } else if (tag.starts_with('/')) {
      const std::string_view name = tag.substr(1);
      const auto found = openCount.find(name);
      if (found == openCount.end() || found->second == 0) continue;
      while (open.back() != name) closeTop();
      closeTop();
    } else {
      out.append(text.substr(lt, gt - lt + 1));
      open.push_back(tag);
      ++openCount[tag];
    }
  }
  while (!open.empty()) closeTop();
  return out;
}

}  // namespace

std::unique_ptr<ZELMOFXImport> ZELMOFXImport::initWithContentsOfFile(const std::string& path) {
  auto read = ReadFile(path);
  if (!read) return nullptr;
  return std::move(*read);
}

Expected<std::unique_ptr<ZELMOFXImport>, OFXReadError> ZELMOFXImport::ReadFile(
    const std::string& path, bool balanceAggregates) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return Refuse("the file cannot be read");
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) return Refuse("the file cannot be read");
  return Read(bytes, balanceAggregates);
}

Expected<std::unique_ptr<ZELMOFXImport>, OFXReadError> ZELMOFXImport::Read(
    std::string_view bytes, bool balanceAggregates) {
  if (bytes.size() < 8) return Refuse("too short");
  auto importer = std::make_unique<ZELMOFXImport>();
  // Text is trimmed so values written on lines of their own read cleanly; comments and
  // processing instructions are dropped.
  static constexpr unsigned kOptions = pugi::parse_default | pugi::parse_trim_pcdata;
  auto parseBuffer = [&importer] {
    return importer->tree_->load_buffer_inplace(importer->buffer_.data(), importer->buffer_.size(),
                                                kOptions, pugi::encoding_utf8);
  };
  auto notWellFormed = [](const pugi::xml_parse_result& result, std::size_t base,
                          std::string_view of) {
    return Refuse("the XML is not well formed: " + std::string(result.description()) +
                  " at byte " + std::to_string(base + static_cast<std::size_t>(result.offset)) +
                  std::string(of));
  };

  // A first look: UTF-16 by its byte-order mark, else bytes whose markup is ASCII.
  std::string widened;
  std::string_view first = bytes;
  if (StartsWithUTF16Mark(bytes)) {
    widened = platform::DecodeBytesLossy(bytes, platform::kUnicodeStringEncoding).value_or("");
    first = widened;
  }

  std::string text;  // the whole download as UTF-8, for an SGML body
  if (platform::CaseInsensitiveFind(first, "<?xml ") != std::string_view::npos) {
    // An XML document: UTF-8 bytes are parsed as they are; other bytes are decoded first.
    std::size_t base = 0;
    std::string_view of;
    if (!widened.empty()) {
      text = std::move(widened);
      of = " of the decoded text";
      importer->encoding_ = platform::kUnicodeStringEncoding;
    } else {
      std::string_view body = bytes;
      if (StartsWithUTF8Mark(body)) {
        body.remove_prefix(3);
        base = 3;
      }
      if (std::optional<std::string> utf8 =
              platform::DecodeBytes(body, platform::kUTF8StringEncoding)) {
        text = std::move(*utf8);
        importer->encoding_ = platform::kUTF8StringEncoding;
      } else {
        importer->encoding_ = EncodingOfDeclaration(body);
        text = platform::DecodeBytesLossy(body, importer->encoding_).value_or("");
        base = 0;
        of = " of the decoded text";
      }
    }
    importer->buffer_ = text;
    const pugi::xml_parse_result result = parseBuffer();
    if (!result) return notWellFormed(result, base, of);
    if (!importer->tree_->child("OFX")) return Refuse("not an OFX file");
    return importer;
  }
  {
    const std::size_t start = first.find("<OFX>");
    if (start == std::string_view::npos) {
      if (first.find("OFXHEADER") == std::string_view::npos) return Refuse("not an OFX file");
      return Refuse("no <OFX> element");
    }
    // A byte-order mark outweighs what the header says.
    StringEncoding encoding = EncodingOfHeader(first.substr(0, start));
    if (StartsWithUTF16Mark(bytes)) encoding = platform::kUnicodeStringEncoding;
    if (StartsWithUTF8Mark(bytes)) encoding = platform::kUTF8StringEncoding;
    std::optional<std::string> decoded = platform::DecodeBytes(bytes, encoding);
    if (!decoded) {
      return Refuse("the text is not valid " + std::string(platform::EncodingName(encoding)));
    }
    text = std::move(*decoded);
    importer->encoding_ = encoding;
  }

  const std::size_t open = text.find("<OFX>");
  if (open == std::string::npos) return Refuse("no <OFX> element");
  const std::size_t close = text.find("</OFX>", open);
  if (close == std::string::npos) return Refuse("no </OFX> element");
  const std::string_view body = std::string_view(text).substr(open, close + 6 - open);
  std::string closed = addMissingEndTagsToElementsInString(body);
  if (balanceAggregates) closed = BalanceTags(closed);
  importer->buffer_ = escapePhysicalEntitiesInElementsInString(closed);
  const pugi::xml_parse_result result = parseBuffer();
  if (!result) return notWellFormed(result, 0, " of the body with its end tags closed");
  return importer;
}

std::string ZELMOFXImport::addMissingEndTagsToElementsInString(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 4);
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t open = text.find('<', i);
    if (open == std::string_view::npos) {
      out.append(text.substr(i));
      break;
    }
    out.append(text.substr(i, open - i));
    const std::size_t close = text.find('>', open + 1);
    if (close == std::string_view::npos) break;  // the text ends inside a tag
    const std::string_view name = text.substr(open + 1, close - open - 1);
    out.append(text.substr(open, close - open + 1));
    i = close + 1;
    if (name.starts_with('/')) continue;

    const std::size_t next = text.find('<', i);
    const std::size_t contentEnd = next == std::string_view::npos ? text.size() : next;
    if (contentEnd == i) continue;
    const std::string_view content = TrimmedBlanks(text.substr(i, contentEnd - i));
    if (content.empty()) continue;
    out.append(content);
    i = contentEnd;
    const std::string_view rest = text.substr(contentEnd);
    const bool closed = rest.size() >= name.size() + 3 && rest[1] == '/' &&
                        rest.substr(2, name.size()) == name && rest[name.size() + 2] == '>';
    if (!closed) {
      out.append("</");
      out.append(name);
      out.push_back('>');
    }
  }
  return out;
}

std::string ZELMOFXImport::escapePhysicalEntitiesInElementsInString(std::string_view text) {
  static constexpr std::string_view kEntities[] = {"amp;", "lt;", "gt;", "quot;", "apos;"};
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  std::size_t i = 0;
  while (true) {
    const std::size_t amp = text.find('&', i);
    if (amp == std::string_view::npos) break;
    out.append(text.substr(i, amp + 1 - i));
    const std::string_view after = text.substr(amp + 1);
    bool known = false;
    for (std::string_view entity : kEntities) known = known || after.starts_with(entity);
    if (!known) out.append("amp;");
    i = amp + 1;
  }
  out.append(text.substr(i));
  return out;
}

void ZELMOFXImport::setXMLTree(std::unique_ptr<pugi::xml_document> tree) {
  tree_ = tree ? std::move(tree) : std::make_unique<pugi::xml_document>();
  buffer_.clear();
}

OFXParseResult ZELMOFXImport::parse() const {
  OFXParseResult result;
  result.accounts = Accounts();
  result.types = EntryTypesInAccounts(result.accounts);
  return result;
}

std::vector<OFXAccount> ZELMOFXImport::Accounts() const {
  std::vector<OFXAccount> accounts;
  const pugi::xml_node ofx = BKXMLTreeAtPath(*tree_, "OFX");
  for (pugi::xml_node set = ofx.first_child(); set; set = set.next_sibling()) {
    if (set.type() != pugi::node_element) continue;
    const std::string_view name = set.name();
    if (name == "BANKMSGSRSV1") {
      if (const pugi::xml_node statement = BKXMLTreeAtPath(set, "STMTTRNRS/STMTRS")) {
        accounts.push_back(BankStatementAggregateToAccount(statement));
      }
    } else if (name == "CREDITCARDMSGSRSV1") {
      if (const pugi::xml_node statement = BKXMLTreeAtPath(set, "CCSTMTTRNRS/CCSTMTRS")) {
        accounts.push_back(CreditCardStatementAggregateToAccount(statement));
      }
    } else if (name == "LOANMSGSRSV1") {
      if (const pugi::xml_node statement = BKXMLTreeAtPath(set, "LOANSTMTTRNRS/LOANSTMTRS")) {
        accounts.push_back(LoanStatementAggregateToAccount(statement));
      }
    }
  }
  return accounts;
}

// A bank or credit-card statement: the two differ only in where the account number is.
OFXAccount ZELMOFXImport::TransactionListToAccount(const pugi::xml_node& statement,
                                                   const char* accountIDPath) const {
  OFXAccount account;
  account.currency = TextAt(statement, "CURDEF").value_or("");
  account.accountID = TextAt(statement, accountIDPath).value_or("");
  const pugi::xml_node list = BKXMLTreeAtPath(statement, "BANKTRANLIST");
  account.entries.reserve(CountChildren(list, "STMTTRN"));
  for (const pugi::xml_node transaction : list.children("STMTTRN")) {
    account.entries.push_back(BankTransactionAggregateToEntry(transaction));
  }
  return account;
}

OFXAccount ZELMOFXImport::BankStatementAggregateToAccount(const pugi::xml_node& statement) const {
  return TransactionListToAccount(statement, "BANKACCTFROM/ACCTID");
}

OFXAccount ZELMOFXImport::CreditCardStatementAggregateToAccount(
    const pugi::xml_node& statement) const {
  return TransactionListToAccount(statement, "CCACCTFROM/ACCTID");
}

OFXAccount ZELMOFXImport::LoanStatementAggregateToAccount(const pugi::xml_node& statement) const {
  OFXAccount account;
  account.currency = TextAt(statement, "CURDEF").value_or("");
  account.accountID = TextAt(statement, "LOANACCTFROM/LOANACCTID").value_or("");
  for (const pugi::xml_node transaction :
       BKXMLTreeAtPath(statement, "LOANTRANLIST").children("LOANSTMTTRN")) {
    account.entries.push_back(LoanTransactionAggregateToEntry(transaction));
  }
  return account;
}

void ZELMOFXImport::Route(ImportRecord& record, std::int32_t code, std::string text) const {
  switch (code) {
    case kRouteToCategory: record.category = std::move(text); break;
    case kRouteToToFrom: record.toFrom = std::move(text); break;
    case kRouteToDescription: record.description = std::move(text); break;
    case kRouteToType: record.type = std::move(text); break;
    case kRouteToNotes: record.notes = std::move(text); break;
    case kRouteToNumber: record.number = LeadingInteger(text); break;
    default: break;
  }
}

ImportRecord ZELMOFXImport::TransactionToEntry(const pugi::xml_node& transaction,
                                               const char* typeElement) const {
  ImportRecord record;
  if (swapOptions_Type_ != kNotRead) {
    if (const auto type = TextAt(transaction, typeElement)) {
      Route(record, swapOptions_Type_, std::string(*type));
    }
  }
  const pugi::xml_node user = transaction.child("DTUSER");
  const pugi::xml_node posted = transaction.child("DTPOSTED");
  if (const auto date = TextOf(user ? user : posted)) record.date = DateStringToDateNumber(*date);
  record.cleared = static_cast<bool>(posted);
  if (const auto amount = TextAt(transaction, "TRNAMT")) {
    SetRecordAmount(record, AmountOfAmountString(*amount));
  }
  if (const auto fitID = TextAt(transaction, "FITID")) record.fitID = std::string(*fitID);
  if (const auto number = TextAt(transaction, "CHECKNUM")) record.number = LeadingInteger(*number);
  if (swapOptions_RefNum_ != kNotRead) {
    if (const auto reference = TextAt(transaction, "REFNUM")) {
      Route(record, swapOptions_RefNum_, std::string(*reference));
    }
  }
  if (swapOptions_Memo_ != kNotRead) {
    if (auto memo = JoinedTextAt(transaction, "MEMO")) Route(record, swapOptions_Memo_, std::move(*memo));
  }
  if (swapOptions_Payee_ != kNotRead) {
    if (auto payee = JoinedTextAt(transaction, "PAYEE/NAME")) {
      Route(record, swapOptions_Payee_, std::move(*payee));
    }
  }
  if (swapOptions_Name_ != kNotRead) {
    const bool extended = static_cast<bool>(transaction.child("EXTDNAME"));
    if (auto name = JoinedTextAt(transaction, extended ? "EXTDNAME" : "NAME")) {
      Route(record, swapOptions_Name_, std::move(*name));
    }
  }
  return record;
}

ImportRecord ZELMOFXImport::BankTransactionAggregateToEntry(const pugi::xml_node& transaction) const {
  return TransactionToEntry(transaction, "TRNTYPE");
}

ImportRecord ZELMOFXImport::LoanTransactionAggregateToEntry(const pugi::xml_node& transaction) const {
  ImportRecord record = TransactionToEntry(transaction, "LOANTRNTYPE");
  std::vector<ImportSplit> splits;
  auto addSplit = [&splits](std::string_view label, double amount) {
    splits.push_back(ImportSplit{amount, "", Localized(label)});
  };
  const pugi::xml_node parts = transaction.child("LOANTRNAMT");
  static constexpr std::pair<const char*, std::string_view> kParts[] = {
      {"PRINAMT", "Principal"}, {"INTAMT", "Interest"}, {"INSURANCE", "Insurance"}};
  for (const auto& [element, label] : kParts) {
    if (const auto amount = TextAt(parts, element)) addSplit(label, AmountOfAmountString(*amount));
  }
  if (const pugi::xml_node escrow = parts.child("ESCRWAMT")) {
    auto part = [&](const char* element) {
      const auto text = TextAt(escrow, element);
      return text ? AmountOfAmountString(*text) : 0.0;
    };
    const double total = part("ESCRWTOTAL");
    double values[] = {part("ESCRWTAX"), part("ESCRWINS"), part("ESCRWPMI"), part("ESCRWFEES"),
                       part("ESCRWOTHER")};
    static constexpr std::string_view kLabels[] = {"Escrow Tax", "Escrow Insurance", "Escrow PMI",
                                                   "Escrow Fees", "Escrow Other"};
    if (total != 0.0) {
      // What the parts leave of the total is "other"; a difference below half a cent is the
      // rounding of the sum, not money.
      const double difference = total - (values[0] + values[1] + values[2] + values[3] + values[4]);
      if (std::fabs(difference) >= 0.005) values[4] += difference;
      for (int i = 0; i < 5; ++i) {
        if (values[i] != 0.0) addSplit(kLabels[i], values[i]);
      }
    }
  }
  if (!splits.empty()) record.splits = std::move(splits);
  return record;
}

std::vector<ImportType> ZELMOFXImport::EntryTypesInAccounts(const std::vector<OFXAccount>& accounts) {
  std::vector<ImportType> types;
  for (const OFXAccount& account : accounts) AddImportTypes(account.entries, types);
  return types;
}

std::int32_t ZELMOFXImport::DateStringToDateNumber(std::string_view text) {
  std::int32_t number = 0;
  int digits = 0;
  for (char c : text) {
    if (c < '0' || c > '9') continue;
    number = number * 10 + (c - '0');
    if (++digits == 8) break;
  }
  return digits < 8 ? platform::Today() : number;
}

}  // namespace folvant
