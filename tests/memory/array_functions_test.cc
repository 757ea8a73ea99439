// SPDX-License-Identifier: Apache-2.0
//
// Each array function on each kind of array while memory runs out, at whichever allocation that
// happens: the caller gets what the header says, nothing has changed, nothing is lost, and the same
// call works as soon as there is memory again.

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <new>
#include <set>

#include "memory/description.h"
#include "memory/operation.h"
#include "memory/sweep.h"

namespace hcy::abi {

std::string describe(const Answer& answer) {
  return describe(answer.array) + ", text " + (answer.text ? answer.text.get() : "none") + ", " +
         std::to_string(answer.number);
}

static void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.function << ' ' << operation.how;
}

namespace {

// An operation on arrays of one origin.
class Exhaustion {
 public:
  Exhaustion(const Operation& operation, const ArrayCase& arrayCase)
      : operation_(operation), case_(arrayCase) {
    before_ = describe(World(case_));
    World world(case_);
    answer_ = describe(operation_.call(world));
    after_ = describe(world);
  }

  // How often an allocation failed.
  std::size_t run() const {
    return failEachAllocation([this](const Shortage& shortage) { return attempt(shortage); });
  }

 private:
  bool attempt(const Shortage& shortage) const {
    World world(case_);
    Answer answer;
    bool threw = false, failed = false;
    {
      const test::FailingAllocation failing(shortage.working, shortage.exhaustion);
      try {
        answer = operation_.call(world);
      } catch (const std::bad_alloc&) {
        threw = true;
      }
      failed = failing.hasFailed();
    }
    if (failed) {
      expectOutcome(answer, threw);
      EXPECT_EQ(describe(world), before_);
      answer = operation_.call(world);
      threw = false;
    }
    EXPECT_FALSE(threw);
    EXPECT_EQ(describe(answer), answer_);
    EXPECT_EQ(describe(world), after_);
    return failed;
  }

  void expectOutcome(const Answer& answer, bool threw) const {
    EXPECT_NE(operation_.whenExhausted, WhenExhausted::NotAtAll);
    EXPECT_EQ(threw, operation_.whenExhausted == WhenExhausted::Throws);
    if (threw) return;
    EXPECT_EQ(answer.number, operation_.neutral);
    EXPECT_EQ(answer.text, nullptr);
  }

  const Operation& operation_;
  const ArrayCase case_;
  std::string before_, answer_, after_;
};

std::string nameOf(const testing::TestParamInfo<Operation>& info) {
  const std::string how = info.param.how;
  return std::to_string(info.index) + info.param.function + (how.empty() ? "" : "_" + how);
}

void expectThatMemoryWasNeeded(const Operation& operation, std::size_t failures) {
  EXPECT_EQ(failures != 0, operation.whenExhausted != WhenExhausted::NotAtAll);
}

class ExhaustedMemory : public testing::TestWithParam<Operation> {};

TEST_P(ExhaustedMemory, isTheCallersToHandle) {
  std::size_t failures = 0;
  for (const ArrayCase& arrayCase : allArrayCases()) {
    SCOPED_TRACE(described(arrayCase));
    failures += Exhaustion(GetParam(), arrayCase).run();
    if (HasFailure()) return;
  }
  expectThatMemoryWasNeeded(GetParam(), failures);
}

INSTANTIATE_TEST_SUITE_P(Elements, ExhaustedMemory,
                         testing::ValuesIn(lifetimeAndElementOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Shape, ExhaustedMemory, testing::ValuesIn(shapeOperations()), nameOf);
INSTANTIATE_TEST_SUITE_P(Containers, ExhaustedMemory, testing::ValuesIn(containerOperations()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Queries, ExhaustedMemory, testing::ValuesIn(queries()), nameOf);

class ExhaustedMemoryOfACreation : public testing::TestWithParam<Operation> {};

TEST_P(ExhaustedMemoryOfACreation, isTheCallersToHandle) {
  const ArrayCase any{{hcyDOUBLE_CLASS}, Origin::Empty};
  expectThatMemoryWasNeeded(GetParam(), Exhaustion(GetParam(), any).run());
}

INSTANTIATE_TEST_SUITE_P(All, ExhaustedMemoryOfACreation, testing::ValuesIn(creations()), nameOf);

// The four others are the runtime's.
TEST(TheListsOfOperations, nameEveryExportedArrayFunction) {
  std::set<std::string> called = {"hcyInitialize", "hcyInitializeEx", "hcyTerminate",
                                  "hcyGetInitializationErrorMessage"};
  for (const auto& operations : {creations(), lifetimeAndElementOperations(), shapeOperations(),
                                 containerOperations(), queries()}) {
    for (const Operation& operation : operations) called.insert(operation.function);
  }
  std::ifstream file(HCY_EXPORTED_NAMES);
  std::vector<std::string> exported;
  for (std::string name; std::getline(file, name);) exported.push_back(name);
  EXPECT_EQ(exported.size(), 80U);
  EXPECT_THAT(exported, testing::UnorderedElementsAreArray(called));
}

}  // namespace
}  // namespace hcy::abi
