// A curve-fitting tool: reads points from a CSV file, fits a line, a polynomial, an exponential or
// a sum of functions of one's own, prints the coefficients with their standard errors, and draws
// data, fit and residuals with the confidence band that the covariance gives.
//
// docs/fit.png is made by
//   curve_fit examples/data/pressure_sensor.csv --model polynomial --order 2 --plot docs/fit.png
#define CSV_IO_NO_THREAD
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wstringop-truncation"  // a long file name is cut on purpose
#endif
#include <libfccp/csv.h>
#include <muParser.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "tool.hpp"

namespace {

using tool::check;
using tool::Failure;
using tool::format;

struct Options {
  std::string file, model = "line", plot;
  std::vector<std::string> basis;
  int32_t order = 2;
  double confidence = 95.0;  // percent
};

struct Data {
  std::string xName = "x", yName = "y";
  std::vector<double> x, y;
  std::vector<double> deviations;  // of y; empty: not known
  int32_t n() const { return static_cast<int32_t>(x.size()); }
  const double* deviationsOrNull() const {
    return deviations.empty() ? nullptr : deviations.data();
  }
};

struct Fit {
  std::string formula;
  std::vector<std::string> names;  // of the coefficients
  std::vector<double> coefficients, covariance, fitted;
  double meanSquaredError = 0.0;
  std::function<double(double)> value;
  // The derivatives of the value by the coefficients.
  std::function<void(double, double*)> gradient;

  int32_t k() const { return static_cast<int32_t>(names.size()); }
  int32_t freedom() const { return static_cast<int32_t>(fitted.size()) - k(); }
};

bool parseNumber(const char* text, double* value) {
  char* end = nullptr;
  *value = std::strtod(text, &end);
  return end != text && *end == '\0' && std::isfinite(*value);
}

// Rows of `columns` numbers below an optional header. False if the first row has fewer.
template <unsigned columns>
bool readRows(const std::string& file, Data* data) {
  io::CSVReader<columns, io::trim_chars<' ', '\t'>, io::double_quote_escape<',', '"'>,
                io::throw_on_overflow, io::single_and_empty_line_comment<'#'>>
      reader(file);
  char* fields[3] = {};
  const auto next = [&] {
    if constexpr (columns == 3) {
      return reader.read_row(fields[0], fields[1], fields[2]);
    } else {
      return reader.read_row(fields[0], fields[1]);
    }
  };
  for (bool first = true;; first = false) {
    const auto line = [&] { return file + ": line " + std::to_string(reader.get_file_line()); };
    try {
      if (!next()) return true;
    } catch (const io::error::too_few_columns&) {
      if (first && columns == 3) return false;
      throw Failure(line() + ": too few columns");
    } catch (const io::error::too_many_columns&) {
      throw Failure(line() + ": too many columns");
    } catch (const io::error::escaped_string_not_closed&) {
      throw Failure(line() + ": a quotation mark is not closed");
    }
    double numbers[3] = {0.0, 0.0, 1.0};
    unsigned good = 0;
    for (unsigned c = 0; c < columns; ++c) good += parseNumber(fields[c], &numbers[c]) ? 1 : 0;
    if (first && good == 0) {
      data->xName = fields[0];
      data->yName = fields[1];
      continue;
    }
    for (unsigned c = 0; c < columns && good < columns; ++c) {
      if (parseNumber(fields[c], &numbers[c])) continue;
      throw Failure(line() + ": '" + fields[c] + "' is not a finite number");
    }
    if (!(numbers[2] > 0.0)) {
      throw Failure(line() + ": the standard deviation '" + fields[2] + "' is not above 0");
    }
    data->x.push_back(numbers[0]);
    data->y.push_back(numbers[1]);
    if (columns == 3) data->deviations.push_back(numbers[2]);
  }
}

Data readData(const std::string& file) {
  Data data;
  try {
    if (!readRows<3>(file, &data)) readRows<2>(file, &data);
  } catch (const io::error::can_not_open_file& error) {
    throw Failure(file + ": " + std::strerror(error.errno_value));
  } catch (const io::error::base& error) {
    throw Failure(file + ": " + error.what());
  }
  if (data.x.empty()) throw Failure(file + ": holds no points");
  return data;
}

// The matrix of the derivatives at every abscissa.
std::vector<double> designMatrix(const Data& data, const Fit& fit) {
  const std::size_t k = fit.names.size();
  std::vector<double> h(data.x.size() * k);
  for (std::size_t i = 0; i < data.x.size(); ++i) {
    fit.gradient(data.x[i], &h[i * k]);
    for (std::size_t j = 0; j < k; ++j) {
      if (std::isfinite(h[i * k + j])) continue;
      throw Failure(
          format("the term of %s is not finite at x = %g", fit.names[j].c_str(), data.x[i]));
    }
  }
  return h;
}

// Coefficients and covariance of the model that is linear in its coefficients.
void solve(const Data& data, const std::vector<double>& y, Fit* fit) {
  const std::vector<double> h = designMatrix(data, *fit);
  const auto k = fit->names.size();
  fit->coefficients.resize(k);
  fit->covariance.resize(k * k);
  fit->fitted.resize(data.x.size());
  const AnalysisStatus status = GenLSFit(
      h.data(), data.n(), fit->k(), y.data(), data.deviationsOrNull(), FATHOM_LS_HOUSEHOLDER,
      fit->fitted.data(), fit->coefficients.data(), fit->covariance.data(), &fit->meanSquaredError);
  if (status == FATHOM_ERR_SINGULAR) {
    throw Failure("the points do not tell the coefficients apart");
  }
  check(status, "GenLSFit");
}

void requirePoints(const Data& data, std::size_t k) {
  if (data.x.size() >= k) return;
  throw Failure(format("%zu points are too few for %zu coefficients", data.x.size(), k));
}

Fit fitPolynomial(const Data& data, int32_t order) {
  Fit fit;
  fit.formula = "c0";
  for (int32_t j = 0; j <= order; ++j) {
    fit.names.push_back("c" + std::to_string(j));
    if (j > 0) fit.formula += " + c" + std::to_string(j) + " x";
    if (j > 1) fit.formula += "^" + std::to_string(j);
  }
  requirePoints(data, fit.names.size());
  const int32_t k = fit.k();
  fit.gradient = [k](double x, double* h) {
    for (int32_t j = 0; j < k; ++j) h[j] = std::pow(x, j);
  };
  solve(data, data.y, &fit);
  return fit;
}

Fit fitBasis(const Data& data, const std::vector<std::string>& basis) {
  Fit fit;
  struct Term {
    mu::Parser parser;
    double x = 0.0;
  };
  std::vector<std::shared_ptr<Term>> terms;
  for (std::size_t j = 0; j < basis.size(); ++j) {
    terms.push_back(std::make_shared<Term>());
    mu::Parser& parser = terms.back()->parser;
    try {
      parser.DefineVar("x", &terms.back()->x);
      parser.DefineConst("pi", std::numbers::pi);
      parser.SetExpr(basis[j]);
      parser.Eval();
    } catch (const mu::Parser::exception_type& error) {
      throw Failure("--basis '" + basis[j] + "': " + error.GetMsg());
    }
    fit.names.push_back("c" + std::to_string(j));
    fit.formula += (j > 0 ? " + c" : "c") + std::to_string(j) + " (" + basis[j] + ")";
  }
  requirePoints(data, fit.names.size());
  fit.gradient = [terms](double x, double* h) {
    for (std::size_t j = 0; j < terms.size(); ++j) {
      terms[j]->x = x;
      h[j] = terms[j]->parser.Eval();
    }
  };
  solve(data, data.y, &fit);
  return fit;
}

// The nonlinear fit knows no standard deviations. So it is handed points divided by theirs, and
// numbers of points for abscissas, by which its model finds them.
const Data* weighted = nullptr;

double deviationOf(const Data& data, std::size_t i) {
  return data.deviations.empty() ? 1.0 : data.deviations[i];
}

double weightedExponential(double index, const double* c, int32_t) {
  const auto i = static_cast<std::size_t>(index);
  return c[0] * std::exp(c[1] * weighted->x[i]) / deviationOf(*weighted, i);
}

Fit fitExponential(const Data& data) {
  Fit fit;
  fit.formula = "a exp(b x)";
  fit.names = {"a", "b"};
  requirePoints(data, 2);
  const std::size_t n = data.x.size();
  std::vector<double> y = data.y, fitted(n), index(n);
  double c[2];
  const AnalysisStatus status =
      ExpFit(data.x.data(), y.data(), data.n(), fitted.data(), &c[0], &c[1], &fit.meanSquaredError);
  if (status == FATHOM_ERR_SIGN_OF_ARRAY || !std::isfinite(c[0]) || !std::isfinite(c[1])) {
    throw Failure(
        "an exponential needs values that are all above 0, or all below, at more than "
        "one x");
  }
  check(status, "ExpFit");
  for (std::size_t i = 0; i < n; ++i) {
    index[i] = static_cast<double>(i);
    y[i] /= deviationOf(data, i);
  }
  weighted = &data;
  check(NonLinearFit(index.data(), y.data(), data.n(), weightedExponential, c, 2, fitted.data(),
                     &fit.meanSquaredError),
        "NonLinearFit");
  fit.gradient = [a = c[0], b = c[1]](double x, double* h) {
    h[0] = std::exp(b * x);
    h[1] = a * x * h[0];
  };
  // Around the solution the model is as good as linear; what is left to fit are the residuals.
  for (std::size_t i = 0; i < n; ++i) y[i] = data.y[i] - c[0] * std::exp(c[1] * data.x[i]);
  solve(data, y, &fit);
  for (std::size_t i = 0; i < n; ++i) fit.fitted[i] += data.y[i] - y[i];
  fit.coefficients = {c[0] + fit.coefficients[0], c[1] + fit.coefficients[1]};
  fit.value = [c0 = c[0], c1 = c[1]](double x) { return c0 * std::exp(c1 * x); };
  return fit;
}

Fit fitData(const Options& o, const Data& data) {
  Fit fit;
  if (!o.basis.empty()) {
    fit = fitBasis(data, o.basis);
  } else if (o.model == "exponential") {
    fit = fitExponential(data);
  } else {
    fit = fitPolynomial(data, o.model == "line" ? 1 : o.order);
  }
  if (!fit.value) {
    fit.value = [gradient = fit.gradient, c = fit.coefficients](double x) {
      std::vector<double> h(c.size());
      gradient(x, h.data());
      double sum = 0.0;
      for (std::size_t j = 0; j < c.size(); ++j) sum += c[j] * h[j];
      return sum;
    };
  }
  return fit;
}

// Without deviations and without points to spare nothing is known of the errors.
bool hasErrors(const Data& data, const Fit& fit) {
  return !data.deviations.empty() || fit.freedom() > 0;
}

// The factor from a standard error to half a confidence interval.
double coverage(const Options& o, const Data& data, const Fit& fit) {
  const double p = 0.5 + o.confidence / 200.0;
  double factor = 0.0;
  if (data.deviations.empty()) {
    check(InvT_Dist(p, fit.freedom(), &factor), "InvT_Dist");
  } else {
    check(InvN_Dist(p, &factor), "InvN_Dist");
  }
  return factor;
}

// The standard error of the fitted curve.
double curveError(const Fit& fit, double x) {
  std::vector<double> h(fit.names.size());
  fit.gradient(x, h.data());
  double variance = 0.0;
  for (std::size_t i = 0; i < h.size(); ++i) {
    for (std::size_t j = 0; j < h.size(); ++j) {
      variance += h[i] * fit.covariance[i * h.size() + j] * h[j];
    }
  }
  return std::sqrt(std::max(variance, 0.0));
}

void printFit(const Options& o, const Data& data, const Fit& fit) {
  std::printf("%s: %d points, %s against %s\n", o.file.c_str(), static_cast<int>(data.n()),
              data.yName.c_str(), data.xName.c_str());
  std::printf("y = %s\n\n", fit.formula.c_str());
  const bool errors = hasErrors(data, fit);
  const std::string interval = errors ? format("%g %% interval +/-", o.confidence) : "";
  std::printf("Coefficient            Value   Standard error%s%s\n", errors ? "   " : "",
              interval.c_str());
  const double factor = errors ? coverage(o, data, fit) : 0.0;
  for (std::size_t j = 0; j < fit.names.size(); ++j) {
    std::printf("%-11s %16.9g", fit.names[j].c_str(), fit.coefficients[j]);
    const double error = std::sqrt(fit.covariance[j * fit.names.size() + j]);
    if (errors) {
      std::printf("   %14.4g   %*.4g\n", error, static_cast<int>(interval.size()), factor * error);
    } else {
      std::printf("   %14s\n", "unknown");
    }
  }
  const double sum = fit.meanSquaredError * data.n();
  if (!data.deviations.empty()) {
    std::printf("\nChi-square %.4g (degrees of freedom: %d)", sum, static_cast<int>(fit.freedom()));
    double p = 0.0;
    // Beyond, the distribution has no result.
    if (fit.freedom() > 0 && fit.freedom() <= 200) {
      check(XX_Dist(sum, fit.freedom(), &p), "XX_Dist");
      std::printf(", probability of a larger one %.3f", 1.0 - p);
    }
    std::putchar('\n');
  } else if (errors) {
    std::printf("\nResidual standard deviation %.4g (degrees of freedom: %d)\n",
                std::sqrt(sum / fit.freedom()), static_cast<int>(fit.freedom()));
  }
}

void drawFit(const Options& o, const Data& data, const Fit& fit) {
  constexpr int kPoints = 500;
  const auto [lowest, highest] = std::minmax_element(data.x.begin(), data.x.end());
  const double margin = *highest > *lowest ? 0.03 * (*highest - *lowest) : 1.0;
  const double left = *lowest - margin, right = *highest + margin;
  const bool errors = hasErrors(data, fit);
  const bool bars = !data.deviations.empty();
  const double factor = errors ? coverage(o, data, fit) : 0.0;
  tool::Plot plot(o.plot, 1200, 800);
  plot.put("$curve << end\n");
  for (int i = 0; i <= kPoints; ++i) {
    const double x = *lowest + (*highest - *lowest) * i / kPoints;
    const double y = fit.value(x), half = factor * curveError(fit, x);
    plot.put(std::isfinite(y) && std::isfinite(half) ? "%.12g %.12g %.12g\n" : "%.12g NaN NaN\n", x,
             y, half);
  }
  plot.put("end\n$points << end\n");
  for (std::size_t i = 0; i < data.x.size(); ++i) {
    plot.put("%.12g %.12g %.12g %.12g\n", data.x[i], data.y[i], data.y[i] - fit.fitted[i],
             bars ? data.deviations[i] : 0.0);
  }
  plot.put(
      "end\nset multiplot\nset xrange [%.12g:%.12g]\nset lmargin 12\nset rmargin 3\n"
      "set origin 0,0.36\nset size 1,0.64\nset bmargin 0.8\nset format x ''\n"
      "set title noenhanced ",
      left, right);
  plot.putQuoted(o.file + ": y = " + fit.formula);
  plot.put("\nset ylabel noenhanced ");
  plot.putQuoted(data.yName);
  const std::string band = format("title '%g %% confidence'", o.confidence);
  const std::string ends = bars ? "with yerrorbars pt 7 ps 0.8 lw 1.4 lc '#cc3311'"
                                : "with points pt 7 ps 0.8 lc '#cc3311'";
  const std::string fill = "with filledcurves fc '#bbccee' ";
  plot.put(
      "\nset key %s opaque\nplot %s$points using 1:2%s %s title 'Data', "
      "$curve using 1:2 with lines lw 2 lc '#4477aa' title 'Fit'\n",
      fit.value(*lowest) > fit.value(*highest) ? "top right" : "top left",
      errors ? ("$curve using 1:($2-$3):($2+$3) " + fill + band + ", ").c_str() : "",
      bars ? ":4" : "", ends.c_str());
  plot.put(
      "unset title\nunset key\nset origin 0,0\nset size 1,0.36\nset tmargin 0.8\n"
      "set bmargin 4\nset format x '%g'\nset ylabel 'Residual'\nset xlabel noenhanced ");
  plot.putQuoted(data.xName);
  plot.put("\nplot %s0 with lines lw 2 lc '#4477aa', $points using 1:3%s %s\nunset multiplot\n",
           errors ? ("$curve using 1:(-$3):3 " + fill + ", ").c_str() : "", bars ? ":4" : "",
           ends.c_str());
  plot.finish();
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for the options
int main(int argc, char** argv) {
  CLI::App app("Fits a curve to the points of a CSV file.", "curve_fit");
  Options o;
  app.add_option(
         "CSV", o.file,
         "two columns, x and y, and perhaps a third with the standard\ndeviations of y; the "
         "first line may name them")
      ->required()
      ->type_name("");
  app.add_option("--model", o.model, "line (default), polynomial, or exponential: a exp(b x)")
      ->type_name("NAME");
  app.add_option("--order", o.order, "of the polynomial, 0 to 20 (default 2)")->type_name("N");
  app.add_option("--basis", o.basis,
                 "a function of x, as 1, x^2 or sin(2*pi*x); given several times,\nthe sum of "
                 "functions is fitted instead of a model")
      ->allow_extra_args(false)
      ->type_name("EXPRESSION");
  app.add_option("--confidence", o.confidence, "of the intervals and the band (default 95)")
      ->type_name("PERCENT");
  tool::addPlotOption(app, o.plot, "data, fit and residuals");
  app.footer(
      "Lines that are blank or begin with # are skipped. With standard deviations the errors "
      "follow\n"
      "from them, without from the scatter of the points about the curve.\n\n"
      "Exit status: 0 if the curve was fitted (and drawn), 1 otherwise, with the reason in one "
      "line\n"
      "on standard error.");
  return tool::run(app, argc, argv, [&] {
    if (o.model != "line" && o.model != "polynomial" && o.model != "exponential") {
      throw Failure("--model '" + o.model + "': must be one of line, polynomial, exponential");
    }
    if (o.order < 0 || o.order > 20) {
      throw Failure(format("--order '%d': must be a whole number from 0 to 20", o.order));
    }
    if (!(o.confidence > 0.0 && o.confidence < 100.0)) {
      throw Failure(format("--confidence '%g': must be above 0 and below 100", o.confidence));
    }
    const Data data = readData(o.file);
    const Fit fit = fitData(o, data);
    printFit(o, data, fit);
    if (!o.plot.empty()) drawFit(o, data, fit);
  });
}
