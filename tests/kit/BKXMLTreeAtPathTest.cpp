#include "folvant/kit/BKXMLTreeAtPath.h"

#include <gtest/gtest.h>

#include <string>

namespace folvant {
namespace {

constexpr const char* kStatement = R"(<OFX><BANKMSGSRSV1>
    <STMTTRNRS><TRNUID>1</TRNUID></STMTTRNRS>
    <STMTTRNRS><STMTRS><CURDEF>USD</CURDEF>
      <BANKACCTFROM><ACCTID>first</ACCTID></BANKACCTFROM>
      <BANKACCTFROM><ACCTID>second</ACCTID></BANKACCTFROM>
    </STMTRS></STMTTRNRS>
  </BANKMSGSRSV1></OFX>)";

TEST(BKXMLTreeAtPath, FollowsTheFirstChildOfEachNameCaseSensitively) {
  pugi::xml_document document;
  ASSERT_TRUE(document.load_string(kStatement));
  const pugi::xml_node ofx = BKXMLTreeAtPath(document, "/OFX");
  ASSERT_TRUE(ofx);
  EXPECT_EQ(std::string(ofx.name()), "OFX");
  EXPECT_EQ(BKXMLTreeAtPath(document, "OFX"), ofx);
  EXPECT_EQ(BKXMLTreeAtPath(document, ""), document);
  EXPECT_EQ(BKXMLTreeAtPath(ofx, "//"), ofx);

  // The first STMTTRNRS has no STMTRS: the lookup does not try the second one.
  EXPECT_FALSE(BKXMLTreeAtPath(ofx, "BANKMSGSRSV1/STMTTRNRS/STMTRS"));
  const pugi::xml_node second = BKXMLTreeAtPath(ofx, "BANKMSGSRSV1/STMTTRNRS").next_sibling();
  EXPECT_EQ(std::string(BKXMLTreeAtPath(second, "STMTRS/BANKACCTFROM/ACCTID/").child_value()),
            "first");
  EXPECT_EQ(std::string(BKXMLTreeAtPath(second, "STMTRS/CURDEF").child_value()), "USD");

  EXPECT_FALSE(BKXMLTreeAtPath(document, "/ofx"));
  EXPECT_FALSE(BKXMLTreeAtPath(document, "/OFX/NOSUCH/OFX"));
  EXPECT_FALSE(BKXMLTreeAtPath(pugi::xml_node(), "OFX"));
}

}  // namespace
}  // namespace folvant
