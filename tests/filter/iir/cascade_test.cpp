#include "filter/iir/iir.hpp"

namespace fathom::test {
namespace {

// The sections' arithmetic, one sample after another.
Values cascadePlainly(const IIRFilter& f, std::size_t m, Values& state, const Values& x) {
  Values y;
  for (double t : x) {
    for (std::size_t s = 0; s < state.size() / m; ++s) {
      double* w = &state[s * m];
      for (std::size_t j = 0; j < m; ++j) t -= f.a[s * m + j] * w[j];
      const double first = t;
      t *= f.b[s * (m + 1)];
      for (std::size_t j = 0; j < m; ++j) t += f.b[s * (m + 1) + j + 1] * w[j];
      std::copy_backward(w, w + m - 1, w + m);
      w[0] = first;
    }
    y.push_back(t);
  }
  return y;
}

Values stateOf(const Record& record) {
  return {record->state, record->state + record->stateCount};
}

void fill(const Record& record, bool stable) {
  const auto na = static_cast<std::size_t>(record->na), nb = static_cast<std::size_t>(record->nb);
  const Values a = uniform(na, nb), b = uniform(nb, na), state = uniform(na, 3);
  for (std::size_t i = 0; i < na; ++i) record->a[i] = a[i] * (stable ? 0.25 : 3.0);
  std::copy(b.begin(), b.end(), record->b);
  std::copy(state.begin(), state.end(), record->state);
}

TEST(Cascade, BlocksOfAnyLengthHaveTheBitsOfThePlainLoop) {
  const std::size_t n = 300;
  for (const int32_t type : {FATHOM_LOWPASS, FATHOM_BANDSTOP}) {
    for (int32_t order = 1; order <= 36; ++order) {
      for (const int data : {0, 1, 2}) {
        Values x = data == 0 ? uniform(n) : awkward(n, 7);
        if (data == 2) std::fill(x.begin() + 1, x.end(), -0.0);
        Record whole(type, order);
        fill(whole, data != 1);
        Values state = stateOf(whole);
        const Values start = state;
        const std::size_t m = type == FATHOM_LOWPASS ? 2 : 4;
        const Values expected = cascadePlainly(*whole, m, state, x);
        for (const std::size_t block : {1, 2, 7, 31, 32, 33, 47, 48, 49, 50, 64, 4096}) {
          std::copy(start.begin(), start.end(), whole->state);
          Guarded y(n), same(x);
          for (std::size_t i = 0; i < n; i += block) {
            const auto size = static_cast<int32_t>(std::min(block, n - i));
            const Values kept = stateOf(whole);
            ASSERT_EQ(IIRCascadeFiltering(&x[i], size, whole, y + i), FATHOM_OK);
            std::copy(kept.begin(), kept.end(), whole->state);
            ASSERT_EQ(IIRCascadeFiltering(same + i, size, whole, same + i), FATHOM_OK);
          }
          const auto what = [&] {
            return ::testing::Message() << type << ' ' << order << ' ' << block;
          };
          ASSERT_TRUE(SameBits(y.values(), expected) && y.intact()) << what();
          ASSERT_TRUE(SameBits(same.values(), expected) && same.intact()) << what();
          ASSERT_TRUE(SameBits(stateOf(whole), state)) << what();
        }
      }
    }
  }
}

TEST(Cascade, DesigningAgainKeepsState) {
  Record record(FATHOM_BANDPASS, 3);
  const Values x = uniform(40);
  Values y(40);
  Bw_CascadeCoef(1, 0.1, 0.2, record);
  IIRCascadeFiltering(x.data(), 40, record, y.data());
  const Values before = stateOf(record);
  ResetIIRFilter(record);
  ASSERT_EQ(Ch_CascadeCoef(1, 0.2, 0.3, 1, record), FATHOM_OK);
  EXPECT_TRUE(SameBits(stateOf(record), before));
  EXPECT_EQ(record->reset, 1);
}

TEST(Cascade, ResetClearsTheStateEvenWithoutSamples) {
  Record record(FATHOM_BANDPASS, 3), fresh(FATHOM_BANDPASS, 3);
  const Values x = uniform(100);
  Values y(100), again(100);
  for (const Record* r : {&record, &fresh}) ASSERT_EQ(Bw_CascadeCoef(1, 0.1, 0.2, *r), FATHOM_OK);
  IIRCascadeFiltering(x.data(), 100, fresh, y.data());
  IIRCascadeFiltering(x.data(), 40, record, again.data());
  EXPECT_EQ(ResetIIRFilter(record), FATHOM_OK);
  EXPECT_NE(record->state[0], 0.0);
  IIRCascadeFiltering(x.data(), 100, record, again.data());
  EXPECT_TRUE(SameBits(again, y));
  ResetIIRFilter(record);
  EXPECT_EQ(IIRCascadeFiltering(x.data(), 0, record, again.data()), FATHOM_ERR_NO_SAMPLES);
  EXPECT_TRUE(SameBits(stateOf(record), Values(8, 0.0)));
  EXPECT_EQ(record->reset, 0);
}

// Each field in turn is wrong: nothing is filtered and the reset stays asked for. The type is not
// used.
TEST(Cascade, RefusesRecordsWhoseCountsContradictEachOther) {
  using Field = int32_t IIRFilter::*;
  const Values x(4, 1.0);
  for (const int32_t type : {FATHOM_HIGHPASS, FATHOM_BANDPASS}) {
    for (const Field field :
         {&IIRFilter::order, &IIRFilter::na, &IIRFilter::nb, &IIRFilter::stateCount}) {
      for (const int32_t wrong : {0, -1, 1, 7, 13, 1 << 30, INT32_MAX, INT32_MIN}) {
        Record record(type, 5);
        ResetIIRFilter(record);
        std::fill_n(record->state, record->stateCount, 3.0);
        const Values state = stateOf(record);
        const int32_t right = std::exchange((*record).*field, wrong);
        Guarded y(4);
        for (const int32_t n : {4, 0}) {
          EXPECT_EQ(IIRCascadeFiltering(x.data(), n, record, y), FATHOM_ERR_FILTER_RECORD) << wrong;
        }
        (*record).*field = right;
        EXPECT_TRUE(y.untouched() && SameBits(stateOf(record), state) && record->reset == 1);
        record->type = 77;
        EXPECT_EQ(IIRCascadeFiltering(x.data(), 4, record, y), FATHOM_OK);
      }
    }
  }
  EXPECT_EQ(IIRCascadeFiltering(x.data(), 4, nullptr, nullptr), FATHOM_ERR_FILTER_RECORD);
  EXPECT_EQ(Bw_CascadeCoef(1, 0, 0, nullptr), FATHOM_ERR_FILTER_RECORD);
  EXPECT_EQ(Ch_CascadeCoef(1, 0, 0, 0, nullptr), FATHOM_ERR_FILTER_RECORD);
  EXPECT_EQ(InvCh_CascadeCoef(1, 0, 0, 0, nullptr), FATHOM_ERR_FILTER_RECORD);
  EXPECT_EQ(Elp_CascadeCoef(1, 0, 0, 0, 0, nullptr), FATHOM_ERR_FILTER_RECORD);
  EXPECT_EQ(Bessel_CascadeCoef(1, 0, 0, nullptr), FATHOM_ERR_FILTER_RECORD);
}

}  // namespace
}  // namespace fathom::test
