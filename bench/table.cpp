#include "table.hpp"

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <fstream>
#include <map>
#include <random>

namespace fathom::bench {
namespace {

// Processor time of this thread: what other programs take of the core is not counted.
double now() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Rows keep their place, as the registered benchmarks refer to them.
std::deque<Row>& rows() {
  static std::deque<Row> list;
  return list;
}

std::map<std::string, std::string>& leftOut() {
  static std::map<std::string, std::string> works;
  return works;
}

std::string nameOf(const Row& row) {
  return row.work + "/" + std::to_string(row.n) + " vs " + row.peer;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The row being measured, with its data and the rounds so far. Google Benchmark calls again for
// more rounds; only another row makes it prepare anew.
class Measurement {
 public:
  static Measurement& of(const Row& row) {
    static std::unique_ptr<Measurement> current;
    if (!current || current->row_ != &row) {
      current.reset();  // the old data goes before the new is made
      current = std::make_unique<Measurement>(row);
    }
    return *current;
  }

  explicit Measurement(const Row& row) : row_(&row), sides_(row.prepare()) {
    fathom_.call = [this] { status_ = sides_.fathom(); };
    peer_.call = sides_.peer;
    for (Side* side : {&fathom_, &peer_}) {
      time(*side, 1);  // first touch
      const double once = std::max(time(*side, 1), 1e-9);
      side->batch = std::clamp<std::int64_t>(static_cast<std::int64_t>(kBatchSeconds / once), 1,
                                             sides_.maxBatch);
    }
  }

  // A batch of each side in turn, so that both meet the same clock rate and the same neighbours on
  // the machine: what is compared is the two batches of a round. Returns the time taken.
  double round() {
    double taken = 0.0;
    for (Side* side : {&fathom_, &peer_}) {
      const double seconds = time(*side, side->batch);
      side->perCall.push_back(seconds / static_cast<double>(side->batch));
      taken += seconds;
    }
    ratios_.push_back(peer_.perCall.back() / fathom_.perCall.back());
    return taken;
  }

  double fathomTime() const { return median(fathom_.perCall); }
  double peerTime() const { return median(peer_.perCall); }
  double ratio() const { return median(ratios_); }
  AnalysisStatus status() const { return status_; }

 private:
  static constexpr double kBatchSeconds = 100e-6;

  struct Side {
    std::function<void()> call;
    std::int64_t batch = 1;
    std::vector<double> perCall;
  };

  double time(const Side& side, std::int64_t calls) const {
    if (sides_.reset) sides_.reset();
    const double start = now();
    for (std::int64_t k = 0; k < calls; ++k) {
      side.call();
      benchmark::ClobberMemory();
    }
    return now() - start;
  }

  const Row* row_;
  Sides sides_;
  Side fathom_;
  Side peer_;
  std::vector<double> ratios_;
  AnalysisStatus status_ = FATHOM_OK;
};

void measure(benchmark::State& state, const Row& row) {
  Measurement& measurement = Measurement::of(row);
  while (state.KeepRunning()) {
    double taken = 0.0;
    for (int round = 0; round < 3; ++round) taken += measurement.round();
    state.SetIterationTime(taken);
  }
  if (measurement.status() != FATHOM_OK) {
    state.SkipWithError(GetAnalysisErrorString(measurement.status()));
  }
  state.counters["fathom"] = measurement.fathomTime();
  state.counters["peer"] = measurement.peerTime();
  state.counters["ratio"] = measurement.ratio();
}

std::string cpuModel() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

std::string duration(double seconds) {
  const auto [unit, factor] = seconds < 1e-6   ? std::pair{"ns", 1e9}
                              : seconds < 1e-3 ? std::pair{"us", 1e6}
                                               : std::pair{"ms", 1e3};
  char text[32];
  std::snprintf(text, sizeof text, "%.4g %s", seconds * factor, unit);
  return text;
}

class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override {
    for (const Row& row : rows()) byName_[nameOf(row)] = &row;
    std::printf("%s", cpuModel().c_str());
    for (const auto& cache : benchmark::CPUInfo::Get().caches) {
      if (cache.type != "Instruction") std::printf(", L%d %d KiB", cache.level, cache.size / 1024);
    }
#if defined(__clang__)
    std::printf("\nclang++ %s\n", __clang_version__);
#else
    std::printf("\ng++ %s\n", __VERSION__);
#endif
    std::printf(
        "Processor time per call, and peer / Fathom: medians over rounds of both in turn.\n"
        "'<' marks a ratio more than 3 %% below its goal.\n\n");
    print("work", "n", "peer", "Fathom", "peer", "ratio", "goal", "");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const Row& row = *byName_.at(run.run_name.function_name);
      if (run.error_occurred) {
        std::printf("%s: %s\n", nameOf(row).c_str(), run.error_message.c_str());
        continue;
      }
      const double fathom = run.counters.at("fathom");
      const double peer = run.counters.at("peer");
      const double ratio = run.counters.at("ratio");
      const bool missed = ratio < 0.97 * row.goal;
      if (row.goal > 0.0) ++(missed ? missed_ : met_);
      char ratioText[16];
      char goalText[16] = "";
      std::snprintf(ratioText, sizeof ratioText, "%.2f", ratio);
      if (row.goal > 0.0) std::snprintf(goalText, sizeof goalText, "%.2f", row.goal);
      print(row.work, std::to_string(row.n), row.peer, duration(fathom), duration(peer), ratioText,
            goalText, missed ? "<" : "");
    }
  }

  void Finalize() override {
    std::printf("\n%d goals met, %d missed\n", met_, missed_);
    for (const auto& [peer, works] : leftOut()) {
      std::printf("Left out, as %s was not found when this was configured: %s\n", peer.c_str(),
                  works.c_str());
    }
  }

 private:
  static void print(const std::string& work, const std::string& n, const std::string& peer,
                    const std::string& fathomTime, const std::string& peerTime,
                    const std::string& ratio, const std::string& goal, const std::string& mark) {
    std::printf("%-22s %8s  %-32s %10s %10s %7s %6s %s\n", work.c_str(), n.c_str(), peer.c_str(),
                fathomTime.c_str(), peerTime.c_str(), ratio.c_str(), goal.c_str(), mark.c_str());
    std::fflush(stdout);
  }

  std::map<std::string, const Row*> byName_;
  int met_ = 0;
  int missed_ = 0;
};

}  // namespace

double byLevel(double wide, double middle, double narrow) {
#if defined(__x86_64__) && defined(__GNUC__)
  // Empty: the highest that the processor has. NOLINTNEXTLINE(readability-redundant-string-init)
  constexpr std::string_view level = FATHOM_BENCH_LEVEL;
  if (level != "x86-64" && __builtin_cpu_supports("avx2")) {
    return level != "x86-64-v3" && __builtin_cpu_supports("avx512vl") ? wide : middle;
  }
#endif
  return narrow;
}

double secondsByPython(const std::string& program) {
  for (std::string command : {"python3", "/usr/bin/python3"}) {
    command.append(" -c \"").append(program).append("\" 2>/dev/null");
    std::FILE* pipe = popen(command.c_str(), "r");
    double seconds = 0.0;
    const bool got = pipe != nullptr && std::fscanf(pipe, "%lf", &seconds) == 1;
    if (pipe != nullptr) pclose(pipe);
    if (got) return seconds;
  }
  return 0.0;
}

void spend(double seconds) {
  const double end = now() + seconds;
  while (now() < end) continue;
}

void addRow(Row row) {
  const Row& kept = rows().emplace_back(std::move(row));
  benchmark::RegisterBenchmark(nameOf(kept).c_str(), [&kept](benchmark::State& state) {
    measure(state, kept);
  })->UseManualTime();
}

void leaveOut(const std::string& peer, const std::string& work) {
  std::string& works = leftOut()[peer];
  works += works.empty() ? work : ", " + work;
}

Array constant(std::int32_t n, double value) {
  return std::make_shared<std::vector<double>>(static_cast<std::size_t>(n), value);
}

Array uniform(std::int32_t n, double low, double high) {
  std::mt19937_64 engine(static_cast<std::uint64_t>(n));
  std::uniform_real_distribution<double> draw(low, high);
  Array x = constant(n, 0.0);
  std::generate(x->begin(), x->end(), [&] { return draw(engine); });
  return x;
}

}  // namespace fathom::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  fathom::bench::addElementaryRows();
  fathom::bench::addArrayRows();
  fathom::bench::addArrayComplexRows();
  fathom::bench::addStatsRows();
  fathom::bench::addDistributionRows();
  fathom::bench::addGenerateRows();
  fathom::bench::addWindowRows();
  fathom::bench::addSpectralRows();
  fathom::bench::addConvolveRows();
  fathom::bench::addFirRows();
  fathom::bench::addUnitsRows();
  fathom::bench::addLinalgRows();
  fathom::bench::addSvdRows();
  fathom::bench::addEigenvalueRows();
  fathom::bench::addLuRows();
  fathom::bench::addFilterRows();
  fathom::bench::addInterpolationRows();
  fathom::bench::addFitRows();
  fathom::bench::addNonlinearRows();
  fathom::bench::TableReporter table;
  benchmark::RunSpecifiedBenchmarks(&table);
  benchmark::Shutdown();
  return 0;
}
