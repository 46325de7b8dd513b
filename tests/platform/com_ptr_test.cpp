// Who holds a reference, and for how long.
#include "platform/com_ptr.h"

#include <gtest/gtest.h>

#include "platform/com_object.h"

namespace {

using zem::ComPtr;

class CountedUnknown : public zem::CountedObject<IUnknown> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return zem::QueryOne<IUnknown>(this, zem::IID_IUnknown, iid, object);
  }
};

using Pointer = ComPtr<CountedUnknown>;

TEST(ComPtrTest, ASharedObjectIsGivenBackOnce) {
  const Pointer first = Pointer::Adopt(new CountedUnknown());
  {
    const Pointer second = Pointer::Share(first.get());
    EXPECT_EQ(second.get(), first.get());
    EXPECT_EQ(first->references(), 2U);
  }
  EXPECT_EQ(first->references(), 1U);
}

TEST(ComPtrTest, SharingNullIsNull) {
  const Pointer none = Pointer::Share(nullptr);
  EXPECT_FALSE(none);
  EXPECT_EQ(none.get(), nullptr);
}

TEST(ComPtrTest, WhatIsMovedIsHeldOnceAndWhatItReplacesNoMore) {
  const Pointer watched = Pointer::Adopt(new CountedUnknown());
  const Pointer replaced = Pointer::Adopt(new CountedUnknown());
  Pointer from = Pointer::Share(watched.get());
  Pointer to = Pointer::Share(replaced.get());
  to = std::move(from);
  EXPECT_EQ(to.get(), watched.get());
  EXPECT_EQ(watched->references(), 2U);
  EXPECT_EQ(replaced->references(), 1U);
  Pointer& same = to;
  to = std::move(same);
  EXPECT_EQ(to.get(), watched.get());
  EXPECT_EQ(watched->references(), 2U);
}

TEST(ComPtrTest, AQueryForTheInterfaceIsAReference) {
  const Pointer object = Pointer::Adopt(new CountedUnknown());
  ComPtr<IUnknown> unknown;
  EXPECT_EQ(object->QueryInterface(zem::IID_IUnknown, unknown.ReceiveVoid()), S_OK);
  EXPECT_EQ(object->references(), 2U);
  void* other = &other;
  EXPECT_EQ(object->QueryInterface(zem::IID_IBaseFilter, &other), E_NOINTERFACE);
  EXPECT_EQ(other, nullptr);
}

}  // namespace
