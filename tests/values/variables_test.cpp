#include "values/math/variables.h"

#include <gtest/gtest.h>

#include "support/math_desk.h"

namespace orvane {
namespace {

using MathVariables = test::MathTest;

TEST_F(MathVariables, NamesHaveCaseAndScopes) {
  EXPECT_TRUE(math("Ab=1; ab=2; @g=3; _x9@=4"));
  EXPECT_EQ(text("Ab&ab&@g&_x9@"), "1234");
  mvar_push_frame(run);
  EXPECT_EQ(number("IsVar(\"Ab\")"), 0);
  EXPECT_EQ(number("IsVar(\"@g\")"), 1);
  EXPECT_TRUE(math("x=7;@g=@g+x"));
  mvar_pop_frame(run);
  EXPECT_EQ(message_of("M[1]=x"), 10322);
  EXPECT_EQ(text("@g"), "10");
  EXPECT_EQ(text("Ab"), "1");
}

TEST_F(MathVariables, ValuesAreTexts) {
  EXPECT_TRUE(math("x=1/3;y=x*3;z=S[9];x=x"));
  EXPECT_EQ(text("x"), "0.3333333333333");
  EXPECT_EQ(text("y"), "0.9999999999999");
  EXPECT_EQ(text("z"), "");
  EXPECT_EQ(number("Null(z)"), 0);
  EXPECT_TRUE(math("i=0;i=i+1;i=i+1;i=i*1e6"));
  EXPECT_EQ(text("i"), "2000000");
  EXPECT_TRUE(math("n=\"a long text that is no number\";m=n;n=n&n"));
  EXPECT_EQ(text("m"), "a long text that is no number");
}

TEST_F(MathVariables, ManyVariablesAreFoundAndStaySorted) {
  const auto name = [](int i) { return (i % 2 == 0 ? "v" : "V") + std::to_string(i * 37 % 100); };
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(math(name(i) + "=" + std::to_string(i)));
    for (int k = 0; k <= i; ++k) ASSERT_EQ(text(name(k)), std::to_string(k)) << i << " " << k;
  }
  const MathVariableList& list = run.math.frames.back();
  ASSERT_EQ(list.size(), 100u);
  for (int i = 0; i < 100; ++i) {
    std::optional<std::string> old;
    ASSERT_TRUE(mvar_Del(run, statement(""), name(i), old));
    ASSERT_EQ(old, std::to_string(i));
    ASSERT_FALSE(mvar_Exists(run, name(i)));
  }
  EXPECT_TRUE(list.empty());
}

TEST_F(MathVariables, OrderNumbersOfTheDisplay) {
  const auto orders = [](const MathVariableList& list) {
    std::string shown;
    for (const MathVariable& one : list) shown += one.name + std::to_string(one.order) + " ";
    return shown;
  };
  EXPECT_TRUE(math("b=1;d=1;c=1"));
  EXPECT_EQ(orders(run.math.frames[0]), "b0 c1 d2 ");
  EXPECT_TRUE(math("@g=1"));  // a global goes before every frame
  EXPECT_EQ(orders(run.math.global), "@g0 ");
  EXPECT_EQ(orders(run.math.frames[0]), "b1 c2 d3 ");
  mvar_push_frame(run);
  EXPECT_TRUE(math("x=1"));  // one above the last entry of the nearest frame that has one
  EXPECT_EQ(orders(run.math.frames[1]), "x4 ");
  EXPECT_TRUE(math("a=1"));  // at the head of a list that is not empty
  EXPECT_EQ(orders(run.math.frames[1]), "a0 x5 ");
}

TEST_F(MathVariables, Faults) {
  std::optional<std::string> old = "untouched";
  EXPECT_TRUE(mvar_Put(run, statement(""), "n", "1", &old));
  EXPECT_EQ(old, "untouched");
  EXPECT_TRUE(mvar_Put(run, statement(""), "n", "2", &old));
  EXPECT_EQ(old, "1");
  mvar_clear(run);
  EXPECT_EQ(message_of("n=1"), 10319);
  EXPECT_EQ(message_of("M[1]=n"), 10319);
  EXPECT_EQ(message_of("del(\"n\")"), 10319);
  EXPECT_EQ(message_of("del(fld(\"a\",2,\",\"))"), 10317);
  EXPECT_EQ(message_of("@n=1"), 0);
  EXPECT_EQ(number("IsVar(\"n\")"), 0);

  const std::pair<const char*, bool> names[] = {
      {"a", true},    {"_1@", true},   {"@", true},    {"1a", false},  {"", false},
      {"MEM", false}, {"mem2", false}, {"mem3", true}, {"a-b", false}, {"a\xE4", false}};
  for (const auto& [name, valid] : names) EXPECT_EQ(mvar_valid_name(name), valid) << name;
  EXPECT_TRUE(mvar_valid_name(std::string(32, 'n')));
  EXPECT_FALSE(mvar_valid_name(std::string(33, 'n')));
}

}  // namespace
}  // namespace orvane
