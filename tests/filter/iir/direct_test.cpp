#include "filter/iir/iir.hpp"

namespace fathom::test {
namespace {

// Each sum over its own samples, the oldest first, with the state in front of the data.
Values directPlainly(const Values& x, const Values& a, Values& outputs, const Values& b,
                     Values& inputs) {
  for (const double v : x) {
    inputs.push_back(v);
    double sum = 0.0;
    for (std::size_t k = b.size(); k-- > 0;) sum += b[k] * inputs[inputs.size() - 1 - k];
    for (std::size_t k = a.size(); k-- > 1;) sum -= a[k] * outputs[outputs.size() - k];
    outputs.push_back(a.empty() ? sum : sum / a[0]);
  }
  Values y(outputs.end() - static_cast<std::ptrdiff_t>(x.size()), outputs.end());
  const auto last = [](Values& v, std::size_t count) {
    v.erase(v.begin(), v.end() - static_cast<std::ptrdiff_t>(count));
  };
  last(inputs, b.size() - 1);
  last(outputs, a.empty() ? 0 : a.size() - 1);
  return y;
}

TEST(Direct, BlocksOfAnyLengthHaveTheBitsOfThePlainLoop) {
  const std::size_t n = 420;
  for (const std::size_t nb : {1, 2, 3, 17, 31, 32, 33, 34, 64, 127, 130, 300}) {
    for (const std::size_t na : {0, 1, 2, 3, 4, 17, 64}) {
      for (const bool hostile : {false, true}) {
        const Values x = hostile ? awkward(n, nb) : uniform(n), b = uniform(nb, 5);
        Values a = uniform(na, 6), outputs = uniform(na > 0 ? na - 1 : 0, 7),
               inputs = uniform(nb - 1);
        for (double& v : a) v *= 0.1;
        if (na > 0) a[0] = 2.0;
        const Values outputsBefore = outputs, inputsBefore = inputs;
        const Values expected = directPlainly(x, a, outputs, b, inputs);
        for (const std::size_t block : {1, 2, 7, 12, 31, 64, 127, 128, 129, 4096}) {
          Guarded y(n), same(x), oldOutputs(outputsBefore), oldInputs(inputsBefore);
          Guarded oldOutputs2(outputsBefore), oldInputs2(inputsBefore);
          for (std::size_t i = 0; i < n; i += block) {
            const auto size = static_cast<int32_t>(std::min(block, n - i));
            // Null where the state has no value, or nothing is fed back.
            const auto filter = [&](const double* from, Guarded& fedBack, Guarded& fed,
                                    double* to) {
              return IIRFiltering(from, size, na > 0 ? a.data() : nullptr,
                                  na > 0 ? fedBack.data() : nullptr, static_cast<int32_t>(na),
                                  b.data(), nb > 1 ? fed.data() : nullptr, static_cast<int32_t>(nb),
                                  to);
            };
            ASSERT_EQ(filter(&x[i], oldOutputs, oldInputs, y + i), FATHOM_OK);
            ASSERT_EQ(filter(same + i, oldOutputs2, oldInputs2, same + i), FATHOM_OK);
          }
          ASSERT_TRUE(SameBits(y.values(), expected) && y.intact())
              << nb << ' ' << na << ' ' << block;
          ASSERT_TRUE(SameBits(same.values(), expected)) << nb << ' ' << na << ' ' << block;
          ASSERT_TRUE(SameBits(oldOutputs.values(), outputs) && oldOutputs.intact());
          ASSERT_TRUE(SameBits(oldInputs.values(), inputs) && oldInputs.intact());
        }
      }
    }
  }
}

TEST(Direct, FeedbackThatIsNotCompleteIsIgnored) {
  const Values x = {4, 6}, a = {2, 1}, b = {1};
  Values state = {8};
  const auto filter = [&](const double* given, double* outputs, int32_t na) {
    Values y(2);
    EXPECT_EQ(IIRFiltering(x.data(), 2, given, outputs, na, b.data(), nullptr, 1, y.data()),
              FATHOM_OK);
    return y;
  };
  EXPECT_EQ(filter(a.data(), state.data(), 1), (Values{2, 3}));
  EXPECT_EQ(filter(nullptr, state.data(), 2), x);
  EXPECT_EQ(filter(a.data(), nullptr, 2), x);
  for (const int32_t na : {0, -1, INT32_MIN}) EXPECT_EQ(filter(a.data(), state.data(), na), x);
  EXPECT_EQ(state, Values{8});
  EXPECT_EQ(filter(a.data(), state.data(), 2), (Values{-2, 4}));
}

TEST(Direct, TheDirectFormOfACascadeIsThatOfItsDesign) {
  for (const int32_t type : {FATHOM_LOWPASS, FATHOM_HIGHPASS, FATHOM_BANDPASS, FATHOM_BANDSTOP}) {
    for (int32_t order = 1; order <= 12; ++order) {
      const int32_t length = (type < FATHOM_BANDPASS ? order : 2 * order) + 1;
      const auto n = static_cast<std::size_t>(length);
      Record record(type, order);
      ASSERT_EQ(Bw_CascadeCoef(1, 0.15, 0.3, record), FATHOM_OK);
      Guarded a(n), b(n);
      Values a2(n), b2(n);
      ASSERT_EQ(CascadeToDirectCoef(record, a, length, b, length), FATHOM_OK);
      EXPECT_TRUE(a.intact() && b.intact());
      ASSERT_EQ(Bw_Coef(type, order, 1, 0.15, 0.3, a2.data(), length, b2.data(), length),
                FATHOM_OK);
      EXPECT_EQ(a[0], 1.0);
      for (std::size_t i = 0; i < n; ++i) {
        EXPECT_NEAR(a[i], a2[i], 1e-13 * (1 + std::fabs(a2[i]))) << type << ' ' << order;
        EXPECT_NEAR(b[i], b2[i], 1e-13 * (1 + std::fabs(b2[i]))) << type << ' ' << order;
      }
    }
  }
}

TEST(Direct, CascadesAreCheckedInOrder) {
  struct {
    int32_t order, type, na, nb, aCapacity, bCapacity;
    AnalysisStatus status;
  } const cases[] = {{0, 9, 0, 0, 0, 0, FATHOM_ERR_ORDER},
                     {3, 9, 0, 0, 0, 0, FATHOM_ERR_SELECTION},
                     {3, -1, 0, 0, 0, 0, FATHOM_ERR_SELECTION},
                     {3, 2, 4, 10, 7, 7, FATHOM_ERR_FILTER_RECORD},
                     {3, 2, 8, 9, 7, 7, FATHOM_ERR_FILTER_RECORD},
                     {3, 2, 8, 10, 6, 7, FATHOM_ERR_FILTER_RECORD},
                     {3, 2, 8, 10, 7, 6, FATHOM_ERR_FILTER_RECORD},
                     {3, 2, 8, 10, 7, 7, FATHOM_OK},
                     {INT32_MAX, 2, 8, 10, 7, 7, FATHOM_ERR_FILTER_RECORD}};
  for (const auto& c : cases) {
    Values coefficients(20, 0.5);
    IIRFilter filter = {c.type, c.order,          0, c.na,   &coefficients[0],
                        c.nb,   &coefficients[8], 0, nullptr};
    Guarded a(7), b(7);
    EXPECT_EQ(CascadeToDirectCoef(&filter, a, c.aCapacity, b, c.bCapacity), c.status);
    EXPECT_TRUE(c.status == FATHOM_OK || (a.untouched() && b.untouched()));
  }
  EXPECT_EQ(CascadeToDirectCoef(nullptr, nullptr, 0, nullptr, 0), FATHOM_ERR_FILTER_RECORD);
}

}  // namespace
}  // namespace fathom::test
