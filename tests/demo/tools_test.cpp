// The filter designer and the curve-fitting tool as a user meets them: tables whose figures have
// closed forms, pictures, and one line of complaint for everything that cannot be done.
#include <cmath>
#include <map>
#include <numbers>
#include <sstream>

#include "demo/program.hpp"

namespace fathom {
namespace {

// The numbers of each line that begins with a word, by that word.
std::map<std::string, std::vector<double>> rows(const std::string& table) {
  std::map<std::string, std::vector<double>> all;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string first;
    words >> first;
    std::vector<double>& row = all[first];
    for (double value = 0.0; words >> value;) row.push_back(value);
  }
  return all;
}

class FilterDesigner : public Program {
 protected:
  FilterDesigner() : Program(FILTER_DESIGNER_PROGRAM) {}
};

TEST_F(FilterDesigner, PrintsCoefficientsToTheLastDigit) {
  const std::string common = "--rate 4 --edges 1 --band lowpass --order ";
  const double root = std::numbers::sqrt2;  // of a Butterworth section whose edge warps to 1
  std::map<std::string, std::vector<double>> r = rows(run(common + "2").out);
  ASSERT_GE(r["1"].size(), 2U);
  EXPECT_NEAR(r["1"][1], 1.0 / (2.0 + root), 1e-15);
  EXPECT_NEAR(r["2"][1], (2.0 - root) / (2.0 + root), 1e-15) << "a2";
  r = rows(run(common + "2 --family equiripple --stop-edges 1.5").out);
  ASSERT_TRUE(r.contains("0") && r.contains("1") && r.contains("2") && !r.contains("3"));
  EXPECT_EQ(r["0"][0], r["2"][0]);
}

TEST_F(FilterDesigner, PrintsLevelsAndDelays) {
  const struct {
    const char* arguments;
    const char* frequency;
    double level, delay;  // NaN: not looked at
  } cases[] = {
      {"--band lowpass --order 7 --edges 100", "100", -10.0 * std::log10(2.0), NAN},
      {"--band lowpass --order 7 --edges 100", "0", 0.0, NAN},
      {"--band highpass --edges 100", "500", 0.0, NAN},
      {"--band bandpass --edges 100,200", "200", -10.0 * std::log10(2.0), NAN},
      {"--band bandstop --edges 100,200 --family chebyshev --ripple 0.2", "100", -0.2, NAN},
      {"--band highpass --edges 100 --family elliptic --ripple 2 --order 5", "100", -2.0, NAN},
      {"--band lowpass --edges 100 --stop-edges 200 --family inverse-chebyshev --attenuation 40",
       "200", -40.0, NAN},
      {"--band lowpass --edges 100 --family kaiser --order 60", "100", 20.0 * std::log10(0.5),
       30.0},
      {"--band highpass --edges 200 --stop-edges 100 --family equiripple --order 20", "500", NAN,
       10.0},
      {"--band bandpass --edges 150,200 --stop-edges 100,250 --family equiripple --order 30", "150",
       NAN, 15.0},
      {"--band bandstop --edges 100,250 --stop-edges 150,200 --family kaiser,equiripple --order 30",
       "250", NAN, 15.0},
  };
  for (const auto& c : cases) {
    const Outcome outcome = run(std::string(c.arguments) + " --rate 1000");
    SCOPED_TRACE(c.arguments + outcome.out + outcome.err);
    ASSERT_EQ(outcome.status, 0);
    const std::vector<double> row = rows(outcome.out)[c.frequency];
    ASSERT_GE(row.size(), 2U);
    const double level = row[row.size() - 2];
    EXPECT_TRUE(!(std::abs(level - c.level) > (c.delay > 0.0 ? 0.05 : 1e-4)));
    EXPECT_TRUE(!(std::abs(row.back() - c.delay) > 1e-3));
  }
  EXPECT_NE(run("--band highpass --rate 1 --edges 0.1").out.find("< -200"), std::string::npos);
}

TEST_F(FilterDesigner, DrawsAndHelps) {
  expectPictures("--band bandpass --rate 48e3 --edges 8e3,12e3 --family butterworth,elliptic",
                 {"Bandpass, order 4, edges 8000 and 12000 Hz", "Butterworth", "Elliptic",
                  "Group delay", "Frequency (Hz)"});
  expectHelp({"--band", "--family", "--order", "--rate", "--edges", "--stop-edges", "--ripple",
              "--attenuation", "--plot", "--help", "inverse-chebyshev"});
}

TEST_F(FilterDesigner, RefusesInOneLine) {
  const std::string good = "--band lowpass --rate 1000 --edges 100 ";
  expectRefusals({
      {"", {"--band", "required"}},
      {"--band low --rate 1 --edges 0.1", {"--band 'low'", "lowpass, highpass, bandpass"}},
      {"--band lowpass --rate 1000 --edges 600", {"butterworth", "band"}},
      {"--band bandpass --rate 1000 --edges 100", {"--edges", "2, not 1"}},
      {good + "--stop-edges 100,200", {"--stop-edges", "1, not 2"}},
      {good + "--family foo", {"--family 'foo'", "equiripple"}},
      {good + "--family equiripple", {"--stop-edges", "equiripple"}},
      {good + "--family elliptic --attenuation 0.4", {"elliptic", "ttenuation"}},
      {good + "--family chebyshev --ripple 0", {"--ripple '0'"}},
      {good + "--attenuation nan", {"--attenuation"}},
      {good + "--order 0", {"--order '0'", "1 to 1000"}},
      {good + "--order two", {"--order", "two"}},
      {good + "--loud", {"--loud"}},
      {good + "stray", {"stray"}},
      {"--band highpass --rate 1 --edges 0.1 --family kaiser --order 5", {"kaiser", "odd"}},
      {good + "--plot @x.gif", {"x.gif", ".png or .svg"}},
      {good + "--plot @nowhere/x.png", {"nowhere/x.png", "No such file"}},
  });
  const Outcome outcome = run(good + "--plot @x.png", "PATH=/nonexistent");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("gnuplot is not installed"), std::string::npos) << outcome.err;
}

class CurveFit : public Program {
 protected:
  CurveFit() : Program(CURVE_FIT_PROGRAM) {}
};

TEST_F(CurveFit, PrintsCoefficientsAndTheirErrors) {
  // Five points with slope 1.95, intercept 0.23 and a sum of squared residuals of 0.083.
  const std::string x[] = {"1", "2", "3", "4", "5"}, y[] = {"2.2", "4.1", "6.2", "7.8", "10.1"};
  std::string plain = "\xEF\xBB\xBF# calibration\r\n\"Force, N\" , Output (mV)\r\n\r\n", weighted;
  for (int i = 0; i < 5; ++i) {
    plain.append(" +").append(x[i]).append(",\t").append(y[i]).append("\r\n");
    weighted.append(x[i]).append(",").append(y[i]).append(",0.1\n");
  }
  writeString("plain.csv", plain);
  writeString("weighted.csv", weighted);
  std::string parabola, decay, sum;
  for (int i = -3; i <= 4; ++i) {
    const std::string at = std::to_string(i) + ",";
    parabola += at + std::to_string(1.5 - 2.0 * i + 0.25 * i * i) + "\n";
    std::ostringstream a, b;
    a.precision(17);
    b.precision(17);
    a << at << -3.0 * std::exp(-0.5 * i) << "," << 0.1 + 0.05 * std::abs(i) << "\n";
    b << at << 2.0 * std::sin(i) - 0.5 << "\n";
    decay += a.str();
    sum += b.str();
  }
  writeString("parabola.csv", parabola);
  writeString("decay.csv", decay);
  writeString("sum.csv", sum);
  const double s = std::sqrt(0.083 / 3.0), t = 3.18245;  // quantile of Student's t: 97.5 %, 3
  const struct {
    const char* arguments;
    std::map<std::string, std::vector<double>> expected;
  } cases[] = {
      {"@plain.csv",
       {{"c0", {0.23, s * std::sqrt(1.1), t * s * std::sqrt(1.1)}},
        {"c1", {1.95, s * std::sqrt(0.1), t * s * std::sqrt(0.1)}}}},
      {"@plain.csv --confidence 90",
       {{"c1", {1.95, s * std::sqrt(0.1), 2.35336 * s * std::sqrt(0.1)}}}},
      {"@weighted.csv",
       {{"c0", {0.23, 0.1 * std::sqrt(1.1)}}, {"c1", {1.95, 0.1 * std::sqrt(0.1)}}}},
      {"@weighted.csv --basis 1 --basis x", {{"c1", {1.95, 0.1 * std::sqrt(0.1)}}}},
      {"@parabola.csv --model polynomial", {{"c0", {1.5}}, {"c1", {-2.0}}, {"c2", {0.25}}}},
      {"@decay.csv --model exponential", {{"a", {-3.0}}, {"b", {-0.5}}}},
      {"@sum.csv --basis 'sin(x)' --basis 1", {{"c0", {2.0}}, {"c1", {-0.5}}}},
  };
  for (const auto& c : cases) {
    const Outcome outcome = run(c.arguments);
    SCOPED_TRACE(c.arguments + ("\n" + outcome.out) + outcome.err);
    EXPECT_EQ(outcome.status, 0);
    std::map<std::string, std::vector<double>> r = rows(outcome.out);
    for (const auto& [name, expected] : c.expected) {
      ASSERT_EQ(r[name].size(), 3U) << name;
      for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(r[name][i] / expected[i], 1.0, i == 0 ? 1e-8 : 1e-3) << name << ' ' << i;
      }
    }
  }
  const std::string out = run("@plain.csv").out;
  EXPECT_NE(out.find("5 points, Output (mV) against Force, N"), std::string::npos) << out;
  EXPECT_NE(out.find("deviation 0.1663 (degrees of freedom: 3)"), std::string::npos) << out;
  const std::string chi = run("@weighted.csv").out;
  EXPECT_NE(chi.find("Chi-square 8.3 (degrees of freedom: 3), probability of a larger one 0.04"),
            std::string::npos)
      << chi;
  writeString("two.csv", "0,1\n1,3\n");
  EXPECT_NE(run("@two.csv").out.find("unknown"), std::string::npos);
  expectPictures("@plain.csv",
                 {"y = c0 + c1 x", "Output (mV)", "Force, N", "Residual", "95 % confidence"});
  expectPictures("@decay.csv --model exponential --confidence 99",
                 {"a exp(b x)", "99 % confidence"});
  expectPictures("@two.csv", {"Fit"});
}

TEST_F(CurveFit, HelpNamesEveryOption) {
  expectHelp({"CSV", "--model", "--order", "--basis", "--confidence", "--plot", "--help"});
}

TEST_F(CurveFit, RefusesInOneLine) {
  const std::map<std::string, std::string> files = {
      {"good", "0,1\n1,2\n2,4\n"},
      {"text", "x,y\n1,2\n\n# c\n2,ten\n"},
      {"nan", "1,2\n2,nan\n"},
      {"wide", "1,2\n2,3,4\n"},
      {"narrow", "1,2,1\n2,3\n"},
      {"four", "1,2,3,4\n"},
      {"one", "x\n1\n"},
      {"empty", ""},
      {"header", "x,y\n"},
      {"zero", "1,2,0\n"},
      {"negative", "1,2,1\n2,3,-1\n"},
      {"huge", "1,1e999\n"},
      {"quote", "1,2\n\"2,3\n"},
      {"same", "1,2\n1,3\n"},
      {"signs", "0,1\n1,-1\n2,3\n"},
      {"gap", "1,2\n,3\n"},
      {"half", "1,y\n2,3\n"},
  };
  for (const auto& [name, text] : files) writeString(name, text);
  expectRefusals({
      {"", {"CSV", "required"}},
      {"@missing.csv", {"missing.csv", "No such file"}},
      {"@.", {"holds no points"}},
      {"@text", {"line 5", "'ten'", "finite number"}},
      {"@nan", {"line 2", "'nan'"}},
      {"@huge", {"line 1", "'1e999'"}},
      {"@half", {"line 1", "'y'"}},
      {"@gap", {"line 2", "''"}},
      {"@wide", {"line 2", "too many columns"}},
      {"@narrow", {"line 2", "too few columns"}},
      {"@four", {"line 1", "too many columns"}},
      {"@one", {"line 1", "too few columns"}},
      {"@empty", {"holds no points"}},
      {"@header", {"holds no points"}},
      {"@zero", {"line 1", "'0'", "above 0"}},
      {"@negative", {"line 2", "'-1'", "above 0"}},
      {"@quote", {"line 2", "quotation mark"}},
      {"@same", {"do not tell the coefficients apart"}},
      {"@signs --model exponential", {"all above 0"}},
      {"@good --model polynomial --order 3", {"3 points are too few for 4 coefficients"}},
      {"@good --model cubic", {"--model 'cubic'", "line, polynomial, exponential"}},
      {"@good --order 21", {"--order '21'", "0 to 20"}},
      {"@good --order two", {"--order", "two"}},
      {"@good --confidence 100", {"--confidence '100'"}},
      {"@good --basis '(x'", {"--basis '(x'", "parenthesis"}},
      {"@good --basis 'ln(x)'", {"c0", "not finite", "x = 0"}},
      {"@good --loud", {"--loud"}},
      {"@good @good", {"good"}},
      {"@good --plot @x.jpg", {"x.jpg", ".png or .svg"}},
      {"@good --plot @nowhere/x.png", {"nowhere/x.png", "No such file"}},
  });
  EXPECT_EQ(run("@good 2> /dev/null > /dev/full; test $? = 1 #").status, 0);
}

}  // namespace
}  // namespace fathom
