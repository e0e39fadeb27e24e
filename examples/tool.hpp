// What the tools written in C++ share: options by CLI11, statuses as exceptions, and every failure
// as one line on standard error with exit status 1.
#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "fathom.h"
#include "plot.h"

namespace tool {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline void check(AnalysisStatus status, const std::string& what) {
  if (status < FATHOM_OK) throw Failure(what + ": " + GetAnalysisErrorString(status));
}

template <typename... Arguments>
std::string format(const char* form, Arguments... arguments) {
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, form, arguments...)), '\0');
  std::snprintf(text.data(), text.size() + 1, form, arguments...);
  return text;
}

// A picture being drawn; it exists once finish() has returned.
class Plot {
 public:
  Plot(const std::string& file, int width, int height) : file_(file) {
    char trouble[kTroubleSize];
    gnuplot_ = openPlot(file.c_str(), width, height, trouble);
    if (!gnuplot_) throw Failure(file_ + ": " + trouble);
  }
  Plot(const Plot&) = delete;
  Plot& operator=(const Plot&) = delete;
  ~Plot() {
    char trouble[kTroubleSize];
    if (gnuplot_) closePlot(gnuplot_, file_.c_str(), trouble);
  }

  template <typename... Arguments>
  void put(const char* form, Arguments... arguments) {
    std::fprintf(gnuplot_, form, arguments...);
  }
  void put(const char* text) { std::fputs(text, gnuplot_); }
  void putQuoted(const std::string& text) { ::putQuoted(text.c_str(), gnuplot_); }

  void finish() {
    char trouble[kTroubleSize];
    FILE* gnuplot = gnuplot_;
    gnuplot_ = nullptr;
    if (!closePlot(gnuplot, file_.c_str(), trouble)) throw Failure(file_ + ": " + trouble);
  }

 private:
  std::string file_;
  FILE* gnuplot_ = nullptr;
};

inline void addPlotOption(CLI::App& app, std::string& file, const std::string& what) {
  app.add_option("--plot", file, "draw " + what + " as FILE.png or FILE.svg (needs gnuplot)")
      ->type_name("FILE")
      ->check([](const std::string& name) {
        return isPlotName(name.c_str()) ? "" : "'" + name + "': the name must end in .png or .svg";
      });
}

// Parses the options, runs the tool, and turns what goes wrong into its line and exit status.
template <typename Body>
int run(CLI::App& app, int argc, char** argv, Body&& body) {
  std::string trouble;
  app.get_formatter()->column_width(24);
  try {
    app.parse(argc, argv);
    body();
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return EXIT_SUCCESS;
    trouble = "cannot write the report";
  } catch (const CLI::CallForHelp&) {
    std::fputs(app.help().c_str(), stdout);
    return EXIT_SUCCESS;
  } catch (const CLI::ParseError& error) {
    trouble = std::string(error.what()) + "; see --help";
  } catch (const std::exception& error) {
    trouble = error.what();
  }
  std::replace(trouble.begin(), trouble.end(), '\n', ' ');
  std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), trouble.c_str());
  return EXIT_FAILURE;
}

}  // namespace tool
