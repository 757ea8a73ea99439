// SPDX-License-Identifier: Apache-2.0
//
// How long messages live, and that nothing of a reply is lost on the way.

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::owned;
using test::wrapped;

// One more owner of the content, who sees when there is no other.
class Watched {
 public:
  explicit Watched(const ArrayHandle& array) : content_(array->content()) {}
  bool expired() const { return content_->use_count() == 1; }
  const ArrayContent* get() const { return content_.get(); }

 private:
  ContentPtr content_;
};

Watched watched(const ArrayHandle& array) { return Watched(array); }

TEST(Message, LivesAsLongAsItsHandle) {
  auto array = wrapped(test::rowOf<DOUBLE_class>({1}));
  const auto message = watched(array);
  array.reset();
  EXPECT_TRUE(message.expired());
}

TEST(Message, OfAnElementLivesAsLongAsItsContainerOrAHandle) {
  auto cell = owned(hcyCreateCellMatrix(1, 1));
  auto value = wrapped(test::rowOf<DOUBLE_class>({1}));
  const auto message = watched(value);
  hcySetCell(cell.get(), 0, value.get());
  value.reset();
  EXPECT_FALSE(message.expired());
  auto element = owned(hcyGetCell(cell.get(), 0));
  EXPECT_EQ(element->content().get(), message.get());
  cell.reset();
  EXPECT_FALSE(message.expired());
  element.reset();
  EXPECT_TRUE(message.expired());
}

TEST(Message, OfAReplacedElementIsReleased) {
  const auto cell = owned(hcyCreateCellMatrix(1, 1));
  const auto message = watched(owned(hcyGetCell(cell.get(), 0)));
  EXPECT_FALSE(message.expired());
  hcySetCell(cell.get(), 0, wrapped(test::rowOf<DOUBLE_class>({1})).get());
  EXPECT_TRUE(message.expired());
}

TEST(Message, OfARemovedFieldIsReleased) {
  const char* const names[] = {"a", "b"};
  const auto array = owned(hcyCreateStructMatrix(1, 1, 2, names));
  const auto message = watched(owned(hcyGetField(array.get(), 0, "a")));
  hcyRemoveField(array.get(), 0);
  EXPECT_TRUE(message.expired());
}

TEST(Message, OfADroppedElementIsReleased) {
  const auto cell = owned(hcyCreateCellMatrix(1, 2));
  const auto message = watched(owned(hcyGetCell(cell.get(), 1)));
  hcySetN(cell.get(), 1);
  EXPECT_TRUE(message.expired());
}

TEST(Message, OfAContainerOfItselfIsReleased) {
  auto cell = owned(hcyCreateCellMatrix(1, 1));
  hcySetCell(cell.get(), 0, cell.get());
  hcySetCell(cell.get(), 0, cell.get());
  const auto message = watched(cell);
  const auto snapshot = watched(owned(hcyGetCell(cell.get(), 0)));
  EXPECT_NE(snapshot.get(), message.get());
  cell.reset();
  EXPECT_TRUE(message.expired());
  EXPECT_TRUE(snapshot.expired());
}

TEST(Message, OfContainersOfEachOtherIsReleased) {
  auto first = owned(hcyCreateCellMatrix(1, 1));
  auto second = owned(hcyCreateCellMatrix(1, 1));
  hcySetCell(first.get(), 0, second.get());
  hcySetCell(second.get(), 0, first.get());
  test::committed(first);
  test::committed(second);
  const auto one = watched(first);
  const auto other = watched(second);
  first.reset();
  EXPECT_FALSE(one.expired());
  second.reset();
  EXPECT_TRUE(one.expired());
  EXPECT_TRUE(other.expired());
}

TEST(Message, IsSharedByTheHandleThatWrapsIt) {
  const ContentPtr content = test::contentOf(test::rowOf<DOUBLE_class>({1, 2}));
  const auto array = ArrayProxyBuilder::over(content);
  hcyGetPr(array.get())[1] = 5.0;
  EXPECT_EQ(test::numbers(content->data.real.as<double>()), (test::Numbers{1, 5}));
}

// An array with everything that the library carries and does not interpret.
VORTEN_Array arrayWithUninterpretedFields(VORTEN_Array array) {
  array.set_arrayid(1);
  array.set_dataframe(2);
  array.mutable_shareddata()->mutable_stringtable()->add_stringentry("entry");
  array.set_memorylayout(VORTEN_Array::ROW_MAJOR);
  array.set_iscomplex(true);
  array.set_classnameindex(3);
  array.mutable_objects()->add_elements()->add_propertyname(4);
  array.mutable_objectrefs()->add_objectid(5);
  array.set_arrayref(6);
  array.set_targettype(VORTEN_Array::CHAR);
  array.set_enumerationclassname(7);
  array.mutable_enumerations()->add_elements()->set_classnameindex(8);
  array.mutable_stringelements()->add_strings(9);
  array.set_packageinfoindex(10);
  array.mutable_sparsewithdataframe()->set_nnzsize(11);
  return array;
}

TEST(UninterpretedFields, AreKeptByCommitCopyAndContainer) {
  for (const VORTEN_Array& plain :
       {test::rowOf<DOUBLE_class>({1}), test::rowOf<INT16_class>({1}), test::rowOf<CHAR_class>({1}),
        test::cellOf({1, 1}, {5}), test::structOf({1, 1}, {"a"}, {5})}) {
    const VORTEN_Array message = arrayWithUninterpretedFields(plain);
    const std::string bytes = message.SerializeAsString();
    const auto array = wrapped(message);
    EXPECT_EQ(test::committed(array).SerializeAsString(), bytes);
    EXPECT_EQ(test::committed(owned(hcyDuplicateArray(array.get()))).SerializeAsString(), bytes);
    const auto cell = owned(hcyCreateCellMatrix(1, 1));
    hcySetCell(cell.get(), 0, array.get());
    EXPECT_EQ(test::committed(cell).cell().elements(0).SerializeAsString(), bytes);
  }
}

}  // namespace
}  // namespace hcy
