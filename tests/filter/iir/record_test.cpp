#include "filter/iir/iir.hpp"

namespace fathom::test {
namespace {

TEST(Record, IsOneBlockOfZerosBehindItsHeader) {
  for (int32_t type = 0; type < 4; ++type) {
    for (const int32_t order : {1, 2, 3, 8, 9}) {
      const Record r(type, order);
      const int32_t m = type < FATHOM_BANDPASS ? 2 : 4, sections = order / 2 + order % 2;
      EXPECT_EQ(r->type, type);
      EXPECT_EQ(r->order, order);
      EXPECT_EQ(r->reset, 0);
      EXPECT_EQ(r->na, sections * m);
      EXPECT_EQ(r->nb, sections * (m + 1));
      EXPECT_EQ(r->stateCount, sections * m);
      const auto* block = reinterpret_cast<const char*>(static_cast<IIRFilterPtr>(r));
      EXPECT_EQ(reinterpret_cast<const char*>(r->a), block + sizeof(IIRFilter));
      EXPECT_EQ(r->b, r->a + r->na);
      EXPECT_EQ(r->state, r->b + r->nb);
      for (const double* v = r->a; v < r->state + r->stateCount; ++v)
        ASSERT_TRUE(SameBits(*v, 0.0));
    }
  }
}

TEST(Record, IsNullForWhatItCannotHold) {
  struct {
    int32_t type, order;
  } const cases[] = {{0, 0},       {0, -1},        {1, INT32_MIN},     {-1, 4},
                     {4, 4},       {0, INT32_MAX}, {1, INT32_MAX - 1}, {2, INT32_MAX},
                     {3, 1 << 30}, {2, 858993460}, {0, 1431655766}};
  for (const auto& c : cases) EXPECT_EQ(AllocIIRFilterPtr(c.type, c.order), nullptr) << c.order;
  FreeIIRFilterPtr(nullptr);
  EXPECT_EQ(ResetIIRFilter(nullptr), FATHOM_OK);
}

}  // namespace
}  // namespace fathom::test
