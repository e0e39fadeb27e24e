// The distortion meter as a user meets it: files in, a table, a picture or one line of complaint
// out.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "demo/program.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

constexpr int kSamples = 65536;
constexpr double kRate = 48000.0;

// A printed quantity: dB, its noise uncertainty, and whether it is an upper bound.
struct Reading {
  double frequency = 0.0, volts = 0.0, decibels = 0.0, uncertainty = 0.0;
  bool below = false;
};

class DistortionMeter : public Program {
 protected:
  DistortionMeter() : Program(DISTORTION_PROGRAM) {}

  void writeText(const std::string& name, const std::vector<double>& x) const {
    std::ofstream file(path(name));
    file.precision(17);
    for (const double v : x) file << v << '\n';
  }
  void writeAudio(const std::string& name, int format,
                  const std::vector<std::vector<double>>& x) const {
    SF_INFO info{};
    info.samplerate = static_cast<int>(kRate);
    info.channels = static_cast<int>(x.size());
    info.format = format;
    SNDFILE* file = sf_open(path(name).c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    std::vector<double> frames;
    for (std::size_t i = 0; i < x[0].size(); ++i) {
      for (const std::vector<double>& channel : x) frames.push_back(channel[i]);
    }
    sf_writef_double(file, frames.data(), static_cast<sf_count_t>(x[0].size()));
    sf_close(file);
  }

  // Harmonic number -> reading; 0 is THD and -1 is THD+N.
  static std::map<int, Reading> parse(const std::string& table) {
    static const std::map<std::string, double> kUnits = {{"fV", 1e-15}, {"pV", 1e-12}, {"nV", 1e-9},
                                                         {"uV", 1e-6},  {"mV", 1e-3},  {"V", 1.0},
                                                         {"kV", 1e3}};
    std::map<int, Reading> readings;
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
      Reading r;
      r.below = line.find('<') != std::string::npos;
      std::erase(line, '<');
      std::istringstream words(line);
      std::string word, unit;
      words >> word;
      if (word == "THD" || word == "THD+N") {
        words >> r.volts >> unit >> r.decibels >> unit >> unit >> r.uncertainty;
        readings[word == "THD" ? 0 : -1] = r;
      } else if (!word.empty() && word.find_first_not_of("0123456789") == std::string::npos &&
                 words >> r.frequency >> r.volts >> unit >> r.decibels) {
        if (!(words >> r.uncertainty)) r.uncertainty = 0.0;
        r.volts *= kUnits.at(unit);
        readings[std::stoi(word)] = r;
      }
    }
    return readings;
  }
};

// A tone of the given RMS level on a fractional bin, with harmonics given as ratios from the
// second.
std::vector<double> tone(double level, double bin, const std::vector<double>& harmonics = {},
                         int n = kSamples) {
  std::vector<double> x(static_cast<std::size_t>(n));
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double angle = 2.0 * std::numbers::pi * bin * static_cast<double>(i) / n;
    x[i] = std::sin(angle + 0.3);
    for (std::size_t h = 0; h < harmonics.size(); ++h) {
      x[i] += harmonics[h] * std::sin(static_cast<double>(h + 2) * (angle + 1.1));
    }
    x[i] *= level * std::numbers::sqrt2;
  }
  return x;
}

// Adds white noise of exactly the given RMS level.
void addNoise(std::vector<double>& x, double level, std::uint64_t seed) {
  const std::vector<double> noise = test::uniform(x.size(), seed);
  double power = 0.0;
  for (const double v : noise) power += v * v;
  const double scale = level / std::sqrt(power / static_cast<double>(x.size()));
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += scale * noise[i];
}

// The promise: levels within 0.1 dB, THD within 1 % of its value, THD+N within 1 dB, wherever the
// tone lies and whatever its level. Where noise as strong as the distortion scatters any reading,
// the printed uncertainty widens the first two.
class Accuracy : public DistortionMeter, public testing::WithParamInterface<const char*> {};

TEST_P(Accuracy, HoldsOverTheGrid) {
  const std::string window = GetParam();
  std::uint64_t seed = 1;
  for (const double bin : {40.0, 40.25, 40.5, 1365.0, 1365.5, 2729.75, 4321.618}) {
    for (const double level : {1e-3, 10.0}) {
      for (const double total : {-40.0, -60.0, -80.0}) {
        for (const double noiseShare : {0.0, 0.3, 1.0}) {  // of the distortion
          const double thd = std::pow(10.0, total / 20) / std::sqrt(1.0 + noiseShare * noiseShare);
          std::vector<double> x = tone(level, bin, {0.8 * thd, 0.6 * thd});
          addNoise(x, noiseShare * thd * level, ++seed);
          std::string input = "@tone.txt --rate 48000";
          if (level < 1.0) {
            writeText("tone.txt", x);
          } else {
            for (double& v : x) v /= 32.0;
            writeAudio("tone.wav", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, {x});
            input = "@tone.wav --full-scale 32";
          }
          const Outcome outcome = run(input.append(" --harmonics 3 --window ").append(window));
          SCOPED_TRACE(testing::Message() << "bin " << bin << ", " << level << " V, THD+N " << total
                                          << " dB, noise " << noiseShare << '\n'
                                          << outcome.out << outcome.err);
          ASSERT_EQ(outcome.status, 0);
          std::map<int, Reading> r = parse(outcome.out);
          ASSERT_EQ(r.size(), 5U);
          const double scale = noiseShare < 1.0 ? 0.0 : 2.0;
          const auto scatter = [&](int h) { return scale * r[h].uncertainty; };
          const std::vector<double> levels = {1.0, 0.8 * thd, 0.6 * thd};
          for (int h = 1; h <= 3; ++h) {
            const double truth = levels[static_cast<std::size_t>(h - 1)];
            EXPECT_FALSE(r[h].below);
            EXPECT_NEAR(20.0 * std::log10(r[h].volts / (truth * level)), 0.0, 0.1 + scatter(h))
                << h;
            EXPECT_NEAR(r[h].decibels, 20.0 * std::log10(truth), 0.1 + scatter(h)) << h;
            EXPECT_NEAR(r[h].frequency, h * bin * kRate / kSamples, 0.02 * h) << h;
          }
          EXPECT_NEAR(r[0].volts / 100.0 / thd, 1.0, 0.01 * std::pow(10.0, scatter(0))) << "THD";
          EXPECT_NEAR(r[-1].decibels, total, 1.0) << "THD+N";
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Windows, Accuracy,
                         testing::Values("seven-term-blackman-harris", "four-term-blackman-harris"),
                         [](const auto& given) { return std::string(given.param).substr(0, 4); });

TEST_F(DistortionMeter, ShowsABoundWhereNoiseOrTheWindowHidesTheValue) {
  writeText("clean.txt", tone(1.0, 1000.3));
  for (const char* window : {"seven", "four"}) {
    const Outcome outcome =
        run(std::string("@clean.txt --rate 1e3 --window ") + window + "-term-blackman-harris");
    std::map<int, Reading> r = parse(outcome.out);
    SCOPED_TRACE(outcome.out);
    for (const int h : {-1, 0, 2, 10}) EXPECT_TRUE(r[h].below && r[h].decibels < -90.0) << h;
  }
  std::vector<double> x = tone(1.0, 1000.3, {1e-6});
  addNoise(x, 1e-3, 7);
  writeText("noisy.txt", x);
  std::map<int, Reading> r = parse(run("@noisy.txt --rate 1e3").out);
  for (const int h : {0, 2, 3}) EXPECT_TRUE(r[h].below && r[h].decibels > -120.0) << h;
  EXPECT_NEAR(r[-1].decibels, -60.0, 1.0);
}

TEST_F(DistortionMeter, IsNotMisledByOffsetOrStrayTones) {
  std::vector<double> x = tone(0.01, 100.5, {1e-3});
  const std::vector<double> stray = tone(1e-4, 777.7);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += 10.0 + stray[i];
  writeText("offset.txt", x);
  std::map<int, Reading> r = parse(run("@offset.txt --rate 65536").out);
  EXPECT_NEAR(r[1].frequency, 100.5, 0.01);
  EXPECT_NEAR(r[1].volts, 0.01, 1e-4);
  EXPECT_NEAR(r[2].decibels, -60.0, 0.1);
  EXPECT_NEAR(r[0].decibels, -60.0, 0.08);
  EXPECT_NEAR(r[-1].decibels, 10.0 * std::log10(1e-6 + 1e-4), 1.0);
}

TEST_F(DistortionMeter, TakesTheChannelAndBlockAskedFor) {
  writeAudio("stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24,
             {tone(0.25, 200.0, {0.01}, 6000), tone(0.1, 300.5, {}, 6000)});
  const struct {
    const char* options;
    double cycles, level;
    const char* block;
  } cases[] = {{"", 200.0, 0.25, "4096 samples"},
               {"--channel 1 --block 2048", 200.0, 0.25, "2048 samples"},
               {"--channel 2", 300.5, 0.1, "4096 samples"},
               {"--channel 2 --full-scale 10", 300.5, 1.0, "4096 samples"}};
  for (const auto& c : cases) {
    const Outcome outcome = run(std::string("@stereo.wav ") + c.options);
    std::map<int, Reading> r = parse(outcome.out);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NEAR(r[1].frequency, c.cycles * kRate / 6000.0, 0.1) << c.options;
    EXPECT_NEAR(r[1].volts, c.level, 0.01 * c.level) << c.options;
    EXPECT_NE(outcome.out.find(c.block), std::string::npos) << outcome.out;
  }
  writeAudio("mono.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, {tone(0.25, 1000.0)});
  EXPECT_NEAR(parse(run("@mono.flac").out)[1].volts, 0.25, 1e-3);
}

TEST_F(DistortionMeter, LeavesOutHarmonicsAboveHalfTheRate) {
  writeText("high.txt", tone(1.0, 9000.0, {0.01, 0.01}));
  const std::map<int, Reading> r = parse(run("@high.txt --rate 48000").out);
  EXPECT_TRUE(r.contains(3) && !r.contains(4));
  writeText("higher.txt", tone(1.0, 20000.0));
  const Outcome outcome = run("@higher.txt --rate 48000");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("THD   not measured"), std::string::npos) << outcome.out;
}

TEST_F(DistortionMeter, ReadsTextsWithCommentsBlankLinesAndEitherLineEnd) {
  std::string text = "# volts\r\n\r\n  # more\n";
  for (const double v : tone(1.0, 200.0, {}, 4096)) text += " " + std::to_string(v) + "\r\n\n";
  writeString("mixed.txt", text);
  EXPECT_NEAR(parse(run("@mixed.txt --rate 4096").out)[1].frequency, 200.0, 0.01);
}

TEST_F(DistortionMeter, MeasuresItsOwnSignal) {
  for (const char* options : {"", "--block 2048", "--window four-term-blackman-harris"}) {
    const Outcome outcome = run(options);
    SCOPED_TRACE(outcome.out + outcome.err);
    EXPECT_EQ(outcome.status, 0);
    int rows = 0;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      int h = 0;
      double f = 0.0, measured = 0.0, error = 1.0;
      std::string truth, level, unit;
      if (words >> h >> f >> measured >> error >> truth >> unit >> level >> unit) {
        ++rows;
        EXPECT_NEAR(f, 997.0 * h, 1e-9);
        EXPECT_NEAR(measured, f, 0.01 * h);
        words >> error;
        EXPECT_TRUE(truth == "0" || std::abs(error) < 0.05) << line;
      }
      if (line.rfind("THD", 0) == 0) {
        const std::size_t at = line.find("error ");
        ASSERT_NE(at, std::string::npos);
        EXPECT_LT(std::abs(std::stod(line.substr(at + 6))), 0.05) << line;
        ++rows;
      }
    }
    EXPECT_EQ(rows, 12);
  }
}

TEST_F(DistortionMeter, DrawsPngAndSvg) {
  EXPECT_EQ(run("--plot @own.png").status, 0);
  EXPECT_EQ(slurp(path("own.png")).substr(0, 8), "\x89PNG\r\n\x1a\n");

  // A name that neither the shell nor gnuplot takes literally.
  const std::string awkward = "it's `x` $y \\n.wav";
  writeAudio("tone.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, {tone(0.5, 4000.5, {0.01, 0.001})});
  std::filesystem::rename(path("tone.wav"), path(awkward));
  const Outcome outcome =
      run("\"@it's \\`x\\` \\$y \\\\n.wav\" --plot \"@it's \\`x\\` \\$y \\\\n.SVG\"");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const std::string svg = slurp(path("it's `x` $y \\n.SVG"));
  EXPECT_EQ(svg.rfind("<?xml", 0), 0U);
  for (const char* text : {"Frequency (Hz)", "Level relative to the fundamental (dB)", "THD 1.00",
                           "THD+N", "$y", "</svg>"}) {
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  }
}

TEST_F(DistortionMeter, HelpNamesEveryOption) {
  expectHelp({"--channel", "--rate", "--full-scale", "--block", "--window", "--harmonics", "--plot",
              "--help"});
}

TEST_F(DistortionMeter, RefusesBadInputInOneLine) {
  const std::vector<double> good = tone(1.0, 500.0, {}, 4096);
  writeText("good.txt", good);
  writeAudio("good.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, {tone(0.5, 500.0, {}, 4096)});
  writeText("short.txt", tone(1.0, 100.0, {}, 1023));
  writeAudio("short-block.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, {tone(0.5, 100.0, {}, 4095)});
  writeText("silent.txt", std::vector<double>(4096, 0.0));
  writeText("constant.txt", std::vector<double>(4096, 0.1));
  writeText("low.txt", tone(1.0, 3.3, {0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1}, 4096));
  writeText("top.txt", tone(1.0, 2046.0, {}, 4096));
  writeText("noise.txt", test::uniform(4096, 3));
  std::vector<double> data = good;
  data[2000] = test::kNan;
  writeAudio("nan.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {data});
  std::vector<double> pair = tone(1.0, 500.0, {}, 4096);
  const std::vector<double> second = tone(0.9, 504.0, {}, 4096);
  for (std::size_t i = 0; i < pair.size(); ++i) pair[i] += second[i];
  writeText("pair.txt", pair);
  writeString("empty", "");
  writeString("garbage.wav", "RIFFthis is not a recording");
  const std::string column = slurp(path("good.txt"));
  writeString("nul", "1.0\n2" + std::string(1, '\0') + "5\n" + column);

  std::vector<Refusal> cases = {
      {"@missing.wav", {"missing.wav", "No such file"}},
      {"@missing.txt --rate 8000", {"missing.txt", "No such file"}},
      {"@.", {"audio"}},
      {"@. --rate 8000", {"irectory"}},
      {"@garbage.wav", {"garbage.wav", "audio"}},
      {"@empty", {"empty", "audio"}},
      {"@good.txt", {"good.txt", "audio", "--rate"}},
      {"@empty --rate 8000", {"too few samples", "0", "1024"}},
      {"@short.txt --rate 8000", {"short.txt", "too few samples", "1023", "1024"}},
      {"@short-block.wav --block 4096", {"too few samples", "4095", "4096"}},
      {"@nul --rate 8000", {"line 2"}},
      {"@good.wav --rate 8000", {"good.wav", "line 1"}},
      {"@nan.wav", {"nan.wav", "sample 2001", "finite"}},
      {"@silent.txt --rate 8000", {"silent.txt", "silence"}},
      {"@constant.txt --rate 8000", {"constant.txt", "silence"}},
      {"@low.txt --rate 8000", {"low.txt", "too low"}},
      {"@top.txt --rate 8000", {"top.txt", "half the sampling rate"}},
      {"@noise.txt --rate 8000", {"noise.txt", "no "}},
      {"@pair.txt --rate 8000", {"pair.txt", "no steady tone"}},
      {"@good.wav --channel 2", {"good.wav", "channel 2 of 1"}},
      {"@good.txt --rate 8000 --channel 1", {"--channel"}},
      {"--rate 8000", {"--rate", "file"}},
      {"@good.wav @good.wav", {"only one file"}},
      {"@good.wav --block 3000", {"--block", "3000", "power of two"}},
      {"@good.wav --window hanning", {"--window", "hanning", "seven-term-blackman-harris"}},
      {"@good.wav --loud", {"unknown option", "--loud"}},
      {"@good.wav -x", {"unknown option", "-x"}},
      {"@good.wav -cx", {"unknown option", "-c"}},
      {"@good.wav --help=1", {"--help=1"}},
      {"@good.wav --block", {"--block", "value"}},
      {"--plot @own.gif", {"--plot", "own.gif", ".png or .svg"}},
      {"--plot @nowhere/own.png", {"nowhere/own.png", "No such file"}},
  };
  for (const std::string bad : {"1.5 2.5", "volts", "1,5", "nan", "-inf", "1e999", "0x", "1\x01"}) {
    writeString("line-" + bad, std::string("# header\n").append(column).append(bad).append("\n"));
    cases.push_back({std::string("'@line-").append(bad).append("' --rate 8000"),
                     {"line 4098", bad == "1\x01" ? std::string("1?") : bad}});
  }
  const std::vector<std::string> values[] = {{"--rate", "0", "-5", "nan", "1e999", "fast", ""},
                                             {"--channel", "0", "1x"},
                                             {"--block", "512", "99999999999999999999"},
                                             {"--harmonics", "1", "101"},
                                             {"--full-scale", "0"}};
  for (const std::vector<std::string>& option : values) {
    for (std::size_t i = 1; i < option.size(); ++i) {
      cases.push_back({"@good.txt " + option[0] + " '" + option[i] + "'", {option[0], option[i]}});
    }
  }
  expectRefusals(cases);
  const Outcome outcome = run("--plot @own.png", "PATH=/nonexistent");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  EXPECT_NE(outcome.err.find("gnuplot is not installed"), std::string::npos) << outcome.err;
  EXPECT_FALSE(std::filesystem::exists(path("own.png")));
  EXPECT_EQ(run("2> /dev/null > /dev/full; test $? = 1 #").status, 0)
      << "a report that cannot be written";
}

}  // namespace
}  // namespace fathom
