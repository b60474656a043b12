#include "messages/catalogue.h"

#include <gtest/gtest.h>

#include <limits>

#include "messages/encoding.h"
#include "support/desk.h"

namespace orvane {
namespace {

TEST(Catalogue, DirectivesPrintTheirArgument) {
  EXPECT_EQ(formatted("line %d of %s", 7, "a.prc"), "line 7 of a.prc");
  EXPECT_EQ(formatted("%-6s|%6.2f|%05d|%x", "ab", 3.14159, 42, 255), "ab    |  3.14|00042|ff");
  EXPECT_EQ(formatted("%*s%3d", 8, "", 5), "          5");
  EXPECT_EQ(formatted("%.2s%%", "abcdef"), "ab%");
  EXPECT_EQ(formatted("%ld %lu", std::numeric_limits<std::int64_t>::min(), 18446744073709551615ULL),
            "-9223372036854775808 18446744073709551615");
}

TEST(Catalogue, ADirectiveThatDoesNotFitPrintsTheArgumentPlainly) {
  EXPECT_EQ(formatted("%s and %d", 12, "text"), "12 and text");
  EXPECT_EQ(formatted("%d", 2.5), "2.5");
  EXPECT_EQ(formatted("%s %s", "only one"), "only one ?");
  EXPECT_EQ(formatted("%n %q 100% %"), "%n %q 100% %");
  EXPECT_EQ(formatted("%999999999d", 1).size(), 512u);
  EXPECT_EQ(formatted("%.999999999f", 1.0).size(), 514u);
  EXPECT_EQ(formatted("%*d", -5, 3), "3");
}

using CatalogueFile = test::EngineTest;

TEST_F(CatalogueFile, FaultsNameFileAndLine) {
  std::string reason;
  const std::string path = write("a.txt", "# words\n\n12 twelve \\n \xC2\xB5\r\n13\n");
  EXPECT_FALSE(catalogue_load(path, reason));
  EXPECT_EQ(reason, path + ":4: a message line is a number, a blank and a text");
  EXPECT_FALSE(catalogue_load(write("b.txt", "12 a\n12 b\n"), reason));
  EXPECT_TRUE(reason.ends_with("message 12 stands twice")) << reason;
  ASSERT_TRUE(catalogue_load(write("c.txt", "12 twelve\\n \xC2\xB5 %s\r\n"), reason)) << reason;
  EXPECT_EQ(msg(12, "x"), "twelve\n \xB5 x");
  EXPECT_EQ(msg(99, 4, "x"), "message 99: 4, x");
}

TEST(Encoding, EveryByteComesBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  std::string back;
  ASSERT_TRUE(cp1252_from_utf8(utf8_from_cp1252(all), back));
  EXPECT_EQ(back, all);
  EXPECT_EQ(utf8_from_cp1252("\x80"), "\xE2\x82\xAC");
  EXPECT_FALSE(cp1252_from_utf8("\xC3", back));
  EXPECT_FALSE(cp1252_from_utf8("\xC0\xAF", back));
  EXPECT_EQ(cp1252_from_either("\xB5 V"), "\xB5 V");
  EXPECT_EQ(cp1252_from_either("\xE4\xB8\x80"), "?");
}

}  // namespace
}  // namespace orvane
