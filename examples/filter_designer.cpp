// A filter designer: from band, family, order and edges to the coefficients, the levels at the
// edges and a picture of the response, for one family or several side by side.
//
// docs/filters.png is made by
//   filter_designer --band lowpass --order 5 --rate 1 --edges 0.1 --stop-edges 0.2 --ripple 1
//     --family bessel,butterworth,chebyshev,inverse-chebyshev,elliptic --plot docs/filters.png
#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "tool.hpp"

namespace {

using tool::check;
using tool::Failure;
using tool::format;

struct Name {
  const char* option;
  const char* title;
};

constexpr Name kBands[] = {{"lowpass", "Lowpass"},
                           {"highpass", "Highpass"},
                           {"bandpass", "Bandpass"},
                           {"bandstop", "Bandstop"}};

enum Family {
  kBessel,
  kButterworth,
  kChebyshev,
  kInverseChebyshev,
  kElliptic,
  kKaiser,
  kEquiripple
};
constexpr Name kFamilies[] = {{"bessel", "Bessel"},
                              {"butterworth", "Butterworth"},
                              {"chebyshev", "Chebyshev"},
                              {"inverse-chebyshev", "Inverse Chebyshev"},
                              {"elliptic", "Elliptic"},
                              {"kaiser", "Kaiser FIR"},
                              {"equiripple", "Equiripple FIR"}};
constexpr const char* kColours[] = {"#999999", "#4477aa", "#228833", "#ee7733",
                                    "#cc3311", "#aa3377", "#66ccee"};

struct Options {
  int32_t band = FATHOM_LOWPASS;
  std::vector<int32_t> families;
  int32_t order = 4;
  double rate = 0.0;
  std::vector<double> edges, stopEdges;
  double ripple = 0.5, attenuation = 60.0;
  std::string plot;

  bool twoEdges() const { return band == FATHOM_BANDPASS || band == FATHOM_BANDSTOP; }
};

// b[0] + b[1] z^-1 + ... over 1 + a[1] z^-1 + ...
struct Section {
  std::vector<double> b, a{1.0};
};

struct Design {
  int32_t family = 0;
  std::vector<Section> sections;
};

struct Response {
  double level = 0.0;  // dB
  double delay = 0.0;  // samples
};

// The value of a polynomial in z^-1 on the unit circle, and its group delay in samples.
std::complex<double> evaluate(const std::vector<double>& c, double angle, double* delay) {
  std::complex<double> sum = 0.0, weighted = 0.0;
  for (std::size_t k = 0; k < c.size(); ++k) {
    const auto term = std::polar(c[k], -angle * static_cast<double>(k));
    sum += term;
    weighted += static_cast<double>(k) * term;
  }
  *delay = (weighted / sum).real();
  return sum;
}

Response respond(const Design& design, double frequency) {
  Response response;
  for (const Section& s : design.sections) {
    double zeros = 0.0, poles = 0.0;
    const double angle = 2.0 * std::numbers::pi * frequency;
    const double gain =
        std::norm(evaluate(s.b, angle, &zeros)) / std::norm(evaluate(s.a, angle, &poles));
    response.level += 10.0 * std::log10(gain);
    response.delay += zeros - poles;
  }
  return response;
}

AnalysisStatus designRecord(const Options& o, int32_t family, IIRFilterPtr record) {
  const std::vector<double>& edges =
      family == kInverseChebyshev && !o.stopEdges.empty() ? o.stopEdges : o.edges;
  const double low = edges[0];
  const double high = o.twoEdges() ? edges[1] : 0.0;
  switch (family) {
    case kBessel:
      return Bessel_CascadeCoef(o.rate, low, high, record);
    case kButterworth:
      return Bw_CascadeCoef(o.rate, low, high, record);
    case kChebyshev:
      return Ch_CascadeCoef(o.rate, low, high, o.ripple, record);
    case kInverseChebyshev:
      return InvCh_CascadeCoef(o.rate, low, high, o.attenuation, record);
    default:
      return Elp_CascadeCoef(o.rate, low, high, o.ripple, o.attenuation, record);
  }
}

// J. F. Kaiser's shape for an attenuation in dB.
double kaiserBeta(double attenuation) {
  if (attenuation > 50.0) return 0.1102 * (attenuation - 8.7);
  if (attenuation <= 21.0) return 0.0;
  return 0.5842 * std::pow(attenuation - 21.0, 0.4) + 0.07886 * (attenuation - 21.0);
}

AnalysisStatus designTaps(const Options& o, int32_t family, std::vector<double>& h) {
  const auto n = static_cast<int32_t>(h.size());
  const std::vector<double>&p = o.edges, &s = o.stopEdges;
  if (family == kKaiser) {
    const double beta = kaiserBeta(o.attenuation);
    switch (o.band) {
      case FATHOM_LOWPASS:
        return Ksr_LPF(o.rate, p[0], n, h.data(), beta);
      case FATHOM_HIGHPASS:
        return Ksr_HPF(o.rate, p[0], n, h.data(), beta);
      case FATHOM_BANDPASS:
        return Ksr_BPF(o.rate, p[0], p[1], n, h.data(), beta);
      default:
        return Ksr_BSF(o.rate, p[0], p[1], n, h.data(), beta);
    }
  }
  double deviation = 0.0;
  switch (o.band) {
    case FATHOM_LOWPASS:
      return EquiRpl_LPF(o.rate, p[0], s[0], n, h.data(), &deviation);
    case FATHOM_HIGHPASS:
      return EquiRpl_HPF(o.rate, s[0], p[0], n, h.data(), &deviation);
    case FATHOM_BANDPASS:
      return EquiRpl_BPF(o.rate, s[0], p[0], p[1], s[1], n, h.data(), &deviation);
    default:
      return EquiRpl_BSF(o.rate, p[0], s[0], s[1], p[1], n, h.data(), &deviation);
  }
}

Design makeDesign(const Options& o, int32_t family) {
  Design design{family, {}};
  if (family == kKaiser || family == kEquiripple) {
    Section taps;
    taps.b.resize(static_cast<std::size_t>(o.order) + 1);
    check(designTaps(o, family, taps.b), kFamilies[family].option);
    design.sections.push_back(taps);
    return design;
  }
  const std::unique_ptr<IIRFilter, decltype(&FreeIIRFilterPtr)> record(
      AllocIIRFilterPtr(o.band, o.order), FreeIIRFilterPtr);
  if (!record) throw Failure("out of memory");
  check(designRecord(o, family, record.get()), kFamilies[family].option);
  const int32_t count = (o.order + 1) / 2;
  const int32_t width = record->na / count;
  for (int32_t i = 0; i < count; ++i) {
    Section s;
    const double* b = record->b + i * (width + 1);
    const double* a = record->a + i * width;
    s.b.assign(b, b + width + 1);
    s.a.insert(s.a.end(), a, a + width);
    design.sections.push_back(s);
  }
  return design;
}

void printDesign(const Options& o, const Design& design) {
  const bool fir = design.sections[0].a.size() == 1;
  std::printf("%s %s filter of order %d, sampled at %.10g Hz\n\n", kFamilies[design.family].title,
              kBands[o.band].option, static_cast<int>(o.order), o.rate);
  std::printf(fir ? "   k                         h\n"
                  : "Section   k                         b                         a\n");
  for (std::size_t i = 0; i < design.sections.size(); ++i) {
    const Section& s = design.sections[i];
    for (std::size_t k = 0; k < s.b.size(); ++k) {
      if (fir) {
        std::printf("%4d   % .16e\n", static_cast<int>(k), s.b[k]);
      } else {
        const std::string section = k == 0 ? std::to_string(i + 1) : "";
        std::printf("%7s %3d   % .16e   % .16e\n", section.c_str(), static_cast<int>(k), s.b[k],
                    s.a[k]);
      }
    }
  }
  std::vector<double> frequencies{0.0, 0.5 * o.rate};
  frequencies.insert(frequencies.end(), o.edges.begin(), o.edges.end());
  frequencies.insert(frequencies.end(), o.stopEdges.begin(), o.stopEdges.end());
  std::sort(frequencies.begin(), frequencies.end());
  std::printf("\nFrequency (Hz)   Level (dB)   Group delay (samples)\n");
  for (const double f : frequencies) {
    const Response r = respond(design, f / o.rate);
    const bool none = !(r.level > -200.0);  // a zero of the response, but for rounding
    std::printf("%14.10g   %10s   %21s\n", f,
                none ? "< -200" : format("%.4f", std::round(r.level * 1e4) / 1e4 + 0.0).c_str(),
                none ? "" : format("%.3f", r.delay).c_str());
  }
}

void drawDesigns(const Options& o, const std::vector<Design>& designs) {
  constexpr int kPoints = 4000;
  const double nyquist = 0.5 * o.rate;
  const double first = o.edges.front(), last = o.edges.back();
  double left = 0.0, right = nyquist;  // of the pass band's panels
  if (o.band == FATHOM_LOWPASS) right = std::min(1.2 * first, nyquist);
  if (o.band == FATHOM_HIGHPASS) left = std::max(first - 0.2 * (nyquist - first), 0.0);
  if (o.band == FATHOM_BANDPASS) {
    left = std::max(first - 0.2 * (last - first), 0.0);
    right = std::min(last + 0.2 * (last - first), nyquist);
  }
  const double floor = -20.0 * std::ceil((std::max(o.attenuation, 40.0) + 60.0) / 20.0);
  tool::Plot plot(o.plot, 1200, 900);
  const auto putResponses = [&](double from, double to) {
    for (const Design& design : designs) {
      for (int i = 0; i <= kPoints; ++i) {
        const double f = from + (to - from) * i / kPoints;
        const Response r = respond(design, f / o.rate);
        plot.put("%.9g %.5f", f, std::max(r.level, floor - 80.0));
        // Between the zeros of a stop band the delay means nothing.
        plot.put(r.level > -40.0 ? " %.5f\n" : " NaN\n", r.delay);
      }
      plot.put("\n\n");
    }
  };
  plot.put("$whole << end\n");
  putResponses(0.0, nyquist);
  plot.put("end\n$pass << end\n");
  putResponses(left, right);
  plot.put("end\narray colour[%zu]\narray name[%zu]\n", designs.size(), designs.size());
  for (std::size_t i = 0; i < designs.size(); ++i) {
    plot.put("colour[%zu] = '%s'\nname[%zu] = '%s'\n", i + 1, kColours[designs[i].family], i + 1,
             kFamilies[designs[i].family].title);
  }
  // An arrow that lies outside a panel would be drawn across its neighbour.
  const auto putEdges = [&](double from, double to) {
    plot.put("unset arrow\n");
    for (const std::vector<double>* edges : {&o.edges, &o.stopEdges}) {
      for (const double edge : *edges) {
        if (edge < from || edge > to) continue;
        plot.put(
            "set arrow from first %.9g,graph 0 to first %.9g,graph 1 nohead dt %d lc '#555555'\n",
            edge, edge, edges == &o.edges ? 2 : 3);
      }
    }
  };
  const char* unit = o.rate == 1.0 ? "Frequency / sampling frequency" : "Frequency (Hz)";
  plot.put("set multiplot title '%s, order %d, edges %.6g%s%s'\n", kBands[o.band].title,
           static_cast<int>(o.order), first, o.twoEdges() ? format(" and %.6g", last).c_str() : "",
           o.rate == 1.0 ? "" : " Hz");
  putEdges(0.0, nyquist);
  plot.put(
      "set xlabel '%s'\nset lmargin 9\nset rmargin 3\nN = %zu\n"
      "set title 'Whole response'\nset ylabel 'Level (dB)'\nset origin 0,0.45\nset size 1,0.52\n"
      "set xrange [0:%.9g]\nset yrange [%g:10]\nset ytics 20\nset key %s opaque\n"
      "plot for [i=1:N] $whole index i-1 using 1:2 with lines lw 2 lc rgb colour[i] title "
      "name[i]\n",
      unit, designs.size(), nyquist, floor,
      o.band == FATHOM_LOWPASS || o.band == FATHOM_BANDPASS ? "top right" : "bottom right");
  putEdges(left, right);
  plot.put(
      "unset key\nset title 'Pass band'\nset origin 0,0\nset size 0.5,0.45\n"
      "set xrange [%.9g:%.9g]\nset yrange [%g:0.5]\nset ytics autofreq\n"
      "plot for [i=1:N] $pass index i-1 using 1:2 with lines lw 2 lc rgb colour[i]\n"
      "set title 'Group delay'\nset ylabel 'Samples'\nset origin 0.5,0\nset yrange [0:*]\n"
      "plot for [i=1:N] $pass index i-1 using 1:3 with lines lw 2 lc rgb colour[i]\n"
      "unset multiplot\n",
      left, right, std::min(-4.0, -2.0 * o.ripple));
  plot.finish();
}

void checkOptions(const Options& o) {
  if (o.order < 1 || o.order > 1000) {
    throw Failure(format("--order '%d': must be a whole number from 1 to 1000", o.order));
  }
  const std::pair<double, const char*> numbers[] = {
      {o.rate, "--rate"}, {o.ripple, "--ripple"}, {o.attenuation, "--attenuation"}};
  for (const auto& [value, option] : numbers) {
    if (value > 0.0 && std::isfinite(value)) continue;
    throw Failure(format("%s '%g': must be a positive number", option, value));
  }
  const std::size_t count = o.twoEdges() ? 2 : 1;
  const auto checkCount = [&](const std::vector<double>& edges, const char* option) {
    if (edges.size() != count) {
      throw Failure(format("%s: a %s filter has %zu, not %zu", option, kBands[o.band].option, count,
                           edges.size()));
    }
  };
  checkCount(o.edges, "--edges");
  if (!o.stopEdges.empty()) checkCount(o.stopEdges, "--stop-edges");
  const bool equiripple =
      std::find(o.families.begin(), o.families.end(), kEquiripple) != o.families.end();
  if (equiripple && o.stopEdges.empty()) throw Failure("--stop-edges: equiripple needs them");
}

template <std::size_t N>
std::string listOf(const Name (&names)[N]) {
  std::string list;
  for (const Name& name : names) list += (list.empty() ? "" : ", ") + std::string(name.option);
  return list;
}

template <std::size_t N>
int32_t parseName(const std::string& given, const char* option, const Name (&names)[N]) {
  for (std::size_t i = 0; i < N; ++i) {
    if (given == names[i].option) return static_cast<int32_t>(i);
  }
  throw Failure(option + (" '" + given) + "': must be one of " + listOf(names));
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for the options
int main(int argc, char** argv) {
  CLI::App app("Designs a digital filter and prints its coefficients and levels.",
               "filter_designer");
  Options o;
  std::string band;
  std::vector<std::string> families{kFamilies[kButterworth].option};
  app.add_option("--band", band, listOf(kBands))->required()->type_name("NAME");
  app.add_option("--family", families,
                 "one or several, separated by commas, of\nbessel, butterworth, chebyshev, "
                 "inverse-chebyshev,\nelliptic, kaiser, equiripple (default butterworth)")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("NAME");
  app.add_option("--order", o.order,
                 "1 to 1000 (default 4), of the lowpass prototype; of kaiser\nand equiripple, one "
                 "less than the number of coefficients")
      ->type_name("N");
  app.add_option("--rate", o.rate, "sampling frequency; 1 for relative frequencies")
      ->required()
      ->type_name("HZ");
  app.add_option(
         "--edges", o.edges,
         "edge of the pass band, or both edges of a bandpass or\nbandstop filter, separated "
         "by a comma")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->required()
      ->type_name("HZ");
  app.add_option("--stop-edges", o.stopEdges,
                 "edges of the stop band, for equiripple and\ninverse-chebyshev (default: those of "
                 "--edges)")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("HZ");
  app.add_option("--ripple", o.ripple, "of the pass band: chebyshev, elliptic (default 0.5)")
      ->type_name("DB");
  app.add_option("--attenuation", o.attenuation,
                 "of the stop band: inverse-chebyshev, elliptic, kaiser\n(default 60)")
      ->type_name("DB");
  tool::addPlotOption(app, o.plot, "the responses");
  app.footer(
      "Exit status: 0 if the filter was designed (and drawn), 1 otherwise, with the reason in one\n"
      "line on standard error.");
  return tool::run(app, argc, argv, [&] {
    o.band = parseName(band, "--band", kBands);
    for (const std::string& family : families) {
      o.families.push_back(parseName(family, "--family", kFamilies));
    }
    checkOptions(o);
    std::vector<Design> designs;
    for (const int32_t family : o.families) designs.push_back(makeDesign(o, family));
    for (std::size_t i = 0; i < designs.size(); ++i) {
      if (i > 0) std::putchar('\n');
      printDesign(o, designs[i]);
    }
    if (!o.plot.empty()) drawDesigns(o, designs);
  });
}
