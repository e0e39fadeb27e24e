// A fixture for tests that drive a built program through the shell, as its user does: files in a
// folder of the test's own, exit status and what was printed out.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fathom {

struct Outcome {
  int status = -1;
  std::string out, err;
};

// A call that must fail, and what its one line of complaint must contain.
struct Refusal {
  std::string arguments;
  std::vector<std::string> facts;
};

class Program : public testing::Test {
 protected:
  // `program` is a path; the complaints begin with its last part.
  explicit Program(const std::string& program) : program_(program) {}

  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "fathom-demo-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  std::string slurp(const std::string& file) const {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void writeString(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
  }

  // `arguments` are the shell's: a file of the test's folder is written @name.
  Outcome run(std::string arguments, const std::string& environment = "") const {
    for (std::size_t at = 0; (at = arguments.find('@', at)) != std::string::npos;) {
      arguments.replace(at, 1, folder_.string() + "/");
    }
    const std::string command = environment + " '" + program_ + "' " + arguments + " >" +
                                path("stdout") + " 2>" + path("stderr");
    const int status = std::system(command.c_str());  // NOLINT: the shell is the user's way in
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(path("stdout")),
            slurp(path("stderr"))};
  }

  void expectRefusals(const std::vector<Refusal>& refusals) const {
    const std::string name = std::filesystem::path(program_).filename().string() + ": ";
    for (const Refusal& refusal : refusals) {
      const Outcome outcome = run(refusal.arguments);
      SCOPED_TRACE(refusal.arguments + " -> " + outcome.err);
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(outcome.err.rfind(name, 0), 0U);
      EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
      for (const std::string& fact : refusal.facts) {
        EXPECT_NE(outcome.err.find(fact), std::string::npos) << fact;
      }
    }
  }
  void expectHelp(const std::vector<std::string>& options) const {
    const Outcome outcome = run("--help");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const std::string& option : options) {
      EXPECT_NE(outcome.out.find(option), std::string::npos) << option;
    }
  }
  // The picture that `arguments` draw, as a PNG, and as an SVG that holds the texts.
  void expectPictures(const std::string& arguments, const std::vector<std::string>& texts) const {
    for (const char* option : {" --plot @picture.png", " --plot @picture.svg"}) {
      const Outcome outcome = run(arguments + option);
      EXPECT_EQ(outcome.status, 0) << outcome.err;
    }
    EXPECT_EQ(slurp(path("picture.png")).substr(0, 8), "\x89PNG\r\n\x1a\n");
    const std::string svg = slurp(path("picture.svg"));
    for (const std::string& text : texts) EXPECT_NE(svg.find(text), std::string::npos) << text;
  }

 private:
  std::string program_;
  std::filesystem::path folder_;
};

}  // namespace fathom
