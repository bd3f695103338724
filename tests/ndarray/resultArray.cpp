#include "ndarray/resultArray.h"

#include "support/catalogue.h"

namespace {

TEST(ResultArray, isDescribedLikeItsSourceOverNullItems) {
  for (const char* form :
       {"Int boxes 1..6 shape=2x3", "Int boxes 1..6 shape=2x3 meta", "Double buffer 1..6 shape=3x2"}) {
    void* source = makeObject(form);
    ListData* list = nullptr;
    void* result = keep(createNdArrayResultLike(source, std::string(kDoubleArray), 40, list));
    EXPECT_EQ(Vesk_objectTypeName(result), std::string(kDoubleArray));
    EXPECT_EQ(list, &dataOf(result));
    EXPECT_EQ(std::vector<void*>(list->objects.data, list->objects.data + list->objects.size), std::vector<void*>(40));
    for (const char* field : {"_shape", "_strides"})
      EXPECT_EQ(Vesk_getField_ptr(result, field), Vesk_getField_ptr(source, field));
    EXPECT_EQ(getObject(result)->metadata->dim1, form[0] == 'I' ? 3 : 2);
  }
}

}  // namespace
