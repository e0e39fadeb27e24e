/*
 * A distortion meter: measures the harmonics, the total harmonic distortion (THD) and the
 * distortion plus noise (THD+N) of a tone in a recording, in a column of numbers, or in a signal
 * that it makes itself. All numerics are routines of fathom.h.
 */
#define _GNU_SOURCE /* NOLINT(bugprone-reserved-identifier): getline, getopt_long, M_PI */

#include <ctype.h>
#include <errno.h>
#include <getopt.h>
#include <math.h>
#include <sndfile.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fathom.h"
#include "plot.h"

enum {
  kSmallestBlock = 1024,
  kDefaultBlock = 65536,
  kLargestBlock = 1 << 24,
  kMostHarmonics = 100,
  kFloorBins = 128 /* bins from which the noise beside a harmonic is taken */
};

/*
 * A window and the band of bins that holds a tone under it. The skirts outside the band set the
 * floor (dB below the fundamental) under which a reading would be the window's, not the signal's.
 * Windows with higher skirts cannot reach -80 dB with any band of reasonable width.
 */
typedef struct Window {
  const char* name;
  const char* title;
  int32_t selector;
  int32_t span;
  double floor;
  double kurtosis; /* mean of w^4 / (mean of w^2)^2: how far noise scatters a reading */
} Window;

static const Window kWindows[] = {{"seven-term-blackman-harris", "seven-term Blackman-Harris",
                                   FATHOM_WINDOW_SEVEN_TERM_BLACKMAN_HARRIS, 15, -150.0, 3.67},
                                  {"four-term-blackman-harris", "four-term Blackman-Harris",
                                   FATHOM_WINDOW_FOUR_TERM_BLACKMAN_HARRIS, 31, -94.0, 2.76}};

typedef struct Options {
  const char* file; /* null: the meter's own signal */
  const char* plot;
  const Window* window;
  double rate;      /* 0: not given */
  double fullScale; /* 0: not given */
  int32_t channel;  /* 0: not given */
  int32_t block;    /* 0: not given */
  int32_t harmonics;
} Options;

typedef struct Signal {
  double* samples;
  int32_t n;
  double rate;
  double volts; /* that a sample of 1.0 stands for */
  char title[512];
} Signal;

typedef struct Harmonic {
  double frequency;
  double power;       /* relative to the fundamental */
  double uncertainty; /* of the power; 95 % */
  bool below;         /* power is an upper bound only */
} Harmonic;

typedef struct Measurement {
  double* power; /* the spectrum, relative to the fundamental */
  int32_t bins;
  double df;
  double level;  /* of the fundamental, V RMS */
  int32_t count; /* harmonics that lie below half the rate */
  Harmonic harmonics[kMostHarmonics];
  Harmonic distortion; /* sum of all but the first */
  Harmonic distortionPlusNoise;
  double lowest; /* frequency from which distortion plus noise is counted */
} Measurement;

typedef struct Tone {
  double multiple; /* of the fundamental */
  double level;    /* V RMS */
  double phase;    /* degrees */
} Tone;

static const double kOwnRate = 48000.0;
static const double kOwnFundamental = 997.0;
static const Tone kOwnTones[] = {{1.0, 1.0, 0.0},    {2.0, 0.01, 40.0},  {3.0, 0.005, 110.0},
                                 {4.0, 1e-3, 250.0}, {5.0, 5e-4, 320.0}, {6.0, 2e-4, 75.0},
                                 {7.0, 1e-4, 190.0}, {15.5, 2e-3, 135.0}};
enum { kOwnToneCount = sizeof kOwnTones / sizeof kOwnTones[0] };

static const char kHelp[] =
    "Usage: distortion [options] [FILE]\n"
    "\n"
    "Measures the harmonics of the strongest tone in FILE, its total harmonic distortion (THD)\n"
    "and its distortion plus noise (THD+N), both relative to the fundamental. The block measured\n"
    "is the start of the file. Without FILE it measures a signal of its own, whose true values\n"
    "it prints beside the measured ones.\n"
    "\n"
    "FILE is a recording (WAV, FLAC, AIFF, Ogg and whatever else libsndfile reads) or, with\n"
    "--rate, a text of one number (volts) a line; blank lines and lines that begin with # are\n"
    "skipped.\n"
    "\n"
    "  --channel N         channel of the recording, from 1 (default 1)\n"
    "  --rate HZ           FILE is a text; its sampling rate\n"
    "  --full-scale VOLTS  voltage that a sample of 1.0 stands for (default 1)\n"
    "  --block N           samples to measure, a power of two from 1024 to 16777216\n"
    "                      (default: the largest up to 65536 that the file fills)\n"
    "  --window NAME       seven-term-blackman-harris (default) or four-term-blackman-harris\n"
    "  --harmonics N       highest harmonic to measure, 2 to 100 (default 10)\n"
    "  --plot FILE         draw the spectrum as FILE.png or FILE.svg (needs gnuplot)\n"
    "  --help              print this text\n"
    "\n"
    "Readings hold to 0.1 dB for levels, 1 % of its value for THD and 1 dB for THD+N down to\n"
    "-80 dB, plus the uncertainty that noise brings, which is printed beside them as +/- (95 %).\n"
    "A < marks an upper bound: the value itself is hidden by noise or by the window. The\n"
    "fundamental must lie above 16 bins (seven-term) or 32 bins (four-term) of rate / N Hz. Noise\n"
    "within half a band (7 or 15 bins) of a tone cannot be told from it; below half a band from\n"
    "0 Hz nothing is counted.\n"
    "\n"
    "Exit status: 0 if the tone was measured (and drawn), 1 otherwise, with the reason in one\n"
    "line on standard error.\n";

/* Says why the meter gives up; false, for the caller to return. */
static bool complain(const char* format, ...) __attribute__((format(printf, 1, 2)));
static bool complain(const char* format, ...) {
  va_list arguments;
  fputs("distortion: ", stderr);
  va_start(arguments, format);
  vfprintf(stderr, format, arguments);
  va_end(arguments);
  fputc('\n', stderr);
  return false;
}

static bool check(AnalysisStatus status, const char* routine) {
  return status == FATHOM_OK || complain("%s: %s", routine, GetAnalysisErrorString(status));
}

static double decibels(double power) {
  return 10.0 * log10(power);
}

static bool parseReal(const char* text, double lowest, double highest, const char* option,
                      const char* unit, double* value) {
  char* end;
  *value = strtod(text, &end);
  if (end != text && *end == '\0' && *value >= lowest && *value <= highest) return true;
  return complain("%s '%s': must be a number from %g to %g%s", option, text, lowest, highest, unit);
}

static bool parseInteger(const char* text, int32_t lowest, int32_t highest, const char* option,
                         int32_t* value) {
  char* end;
  errno = 0;
  const long parsed = strtol(text, &end, 10);
  if (end == text || *end != '\0' || errno != 0 || parsed < lowest || parsed > highest) {
    return complain("%s '%s': must be a whole number from %d to %d", option, text, (int)lowest,
                    (int)highest);
  }
  *value = (int32_t)parsed;
  return true;
}

static bool parseRate(const char* text, double* rate) {
  char* end;
  const double value = strtod(text, &end);
  if (end != text && *end == '\0' && value <= 0.0) {
    return complain("--rate '%s': must be positive", text);
  }
  return parseReal(text, 1e-6, 1e12, "--rate", " Hz", rate);
}

static bool parseBlock(const char* text, int32_t* block) {
  if (!parseInteger(text, kSmallestBlock, kLargestBlock, "--block", block)) return false;
  return (*block & (*block - 1)) == 0 || complain("--block '%s': must be a power of two", text);
}

static bool parseWindow(const char* name, const Window** window) {
  for (size_t i = 0; i < sizeof kWindows / sizeof kWindows[0]; ++i) {
    if (strcmp(name, kWindows[i].name) == 0) {
      *window = &kWindows[i];
      return true;
    }
  }
  return complain("--window '%s': not offered; only %s and %s keep the promised accuracy", name,
                  kWindows[0].name, kWindows[1].name);
}

static bool parsePlot(const char* file, const char** plot) {
  *plot = file;
  return isPlotName(file) || complain("--plot '%s': the name must end in .png or .svg", file);
}

static bool parseOptions(int argc, char** argv, Options* options, bool* help) {
  /* Above every character, so that an unknown short option is told from a misused long one. */
  enum { kChannel = 256, kRate, kFullScale, kBlock, kWindow, kHarmonics, kPlot, kHelpOption };
  static const struct option kOptions[] = {{"channel", required_argument, NULL, kChannel},
                                           {"rate", required_argument, NULL, kRate},
                                           {"full-scale", required_argument, NULL, kFullScale},
                                           {"block", required_argument, NULL, kBlock},
                                           {"window", required_argument, NULL, kWindow},
                                           {"harmonics", required_argument, NULL, kHarmonics},
                                           {"plot", required_argument, NULL, kPlot},
                                           {"help", no_argument, NULL, kHelpOption},
                                           {NULL, 0, NULL, 0}};
  int option;
  opterr = 0;
  while ((option = getopt_long(argc, argv, ":", kOptions, NULL)) != -1) {
    bool good = true;
    switch (option) {
      case kChannel:
        good = parseInteger(optarg, 1, 1024, "--channel", &options->channel);
        break;
      case kRate:
        good = parseRate(optarg, &options->rate);
        break;
      case kFullScale:
        good = parseReal(optarg, 1e-12, 1e12, "--full-scale", " V", &options->fullScale);
        break;
      case kBlock:
        good = parseBlock(optarg, &options->block);
        break;
      case kWindow:
        good = parseWindow(optarg, &options->window);
        break;
      case kHarmonics:
        good = parseInteger(optarg, 2, kMostHarmonics, "--harmonics", &options->harmonics);
        break;
      case kPlot:
        good = parsePlot(optarg, &options->plot);
        break;
      case kHelpOption:
        *help = true;
        return true;
      case ':':
        return complain("option '%s' needs a value; see --help", argv[optind - 1]);
      default:
        if (optopt > 0 && optopt < kChannel) {
          return complain("unknown option '-%c'; see --help", optopt);
        }
        return complain("unknown option '%s'; see --help", argv[optind - 1]);
    }
    if (!good) return false;
  }
  if (optind < argc) options->file = argv[optind++];
  if (optind < argc) return complain("'%s': only one file can be measured", argv[optind]);
  if (!options->file && (options->rate > 0.0 || options->channel > 0 || options->fullScale > 0.0)) {
    return complain("--rate, --channel and --full-scale need a file");
  }
  if (options->rate > 0.0 && options->channel > 0) {
    return complain("--channel is for recordings, --rate for texts: give one of them");
  }
  return true;
}

/* Keeps the largest power of two of the samples read, or the block that was asked for. */
static bool takeBlock(const Options* options, int32_t count, int32_t* n) {
  const int32_t needed = options->block > 0 ? options->block : kSmallestBlock;
  if (count < needed) {
    return complain("%s: too few samples: %d, and %d are needed", options->file, (int)count,
                    (int)needed);
  }
  for (*n = needed; *n <= count / 2;) *n *= 2;
  return true;
}

static bool readAudio(const Options* options, int32_t wanted, Signal* signal) {
  enum { kFrames = 1024 };
  SF_INFO info = {0};
  SNDFILE* file = sf_open(options->file, SFM_READ, &info);
  if (!file) {
    const char* reason = sf_strerror(NULL);
    return complain("%s: no audio that libsndfile reads (%.*s); a text needs --rate", options->file,
                    (int)strcspn(reason, ".\n"), reason);
  }
  const int32_t channel = options->channel > 0 ? options->channel : 1;
  double* frames = NULL;
  bool good = true;
  if (channel > info.channels) {
    good =
        complain("%s: channel %d of %d does not exist", options->file, (int)channel, info.channels);
  } else if (info.samplerate <= 0) {
    good = complain("%s: its sampling rate is not positive", options->file);
  } else if (!(frames = malloc((size_t)kFrames * (size_t)info.channels * sizeof *frames))) {
    good = complain("out of memory");
  }
  int32_t count = 0;
  while (good && frames && count < wanted) {
    const int32_t request = wanted - count < kFrames ? wanted - count : kFrames;
    const sf_count_t got = sf_readf_double(file, frames, request);
    if (got <= 0) break;
    for (sf_count_t i = 0; good && i < got; ++i) {
      signal->samples[count] = frames[i * info.channels + channel - 1];
      if (!isfinite(signal->samples[count])) {
        good = complain("%s: sample %d is not a finite number", options->file, (int)count + 1);
      }
      ++count;
    }
  }
  free(frames);
  sf_close(file);
  if (!good || !takeBlock(options, count, &signal->n)) return false;
  signal->rate = info.samplerate;
  snprintf(signal->title, sizeof signal->title, "%s, channel %d of %d", options->file, (int)channel,
           info.channels);
  return true;
}

/* The whole text is read, so that a line that is no number is found wherever it stands. */
static bool readText(const Options* options, FILE* file, int32_t wanted, Signal* signal) {
  char* line = NULL;
  size_t capacity = 0;
  ssize_t length;
  long number = 0;
  int32_t count = 0;
  bool good = true;
  errno = 0;
  while (good && (length = getline(&line, &capacity, file)) >= 0) {
    ++number;
    while (length > 0 && isspace((unsigned char)line[length - 1])) line[--length] = '\0';
    const char* text = line + strspn(line, " \t");
    if (text == line + length || *text == '#') continue;
    char* end;
    const double value = strtod(text, &end);
    if (end == text || end != line + length || !isfinite(value)) {
      for (char* c = line; c < line + length; ++c) {
        if (!isprint((unsigned char)*c)) *c = '?';
      }
      good = complain("%s: line %ld: '%.40s' is not a finite number", options->file, number, text);
    } else if (count < wanted) {
      signal->samples[count++] = value;
    }
  }
  if (good && ferror(file)) good = complain("%s: %s", options->file, strerror(errno));
  free(line);
  if (!good || !takeBlock(options, count, &signal->n)) return false;
  signal->rate = options->rate;
  snprintf(signal->title, sizeof signal->title, "%s", options->file);
  return true;
}

static bool readFile(const Options* options, Signal* signal) {
  FILE* file = fopen(options->file, "r");
  if (!file) return complain("%s: %s", options->file, strerror(errno));
  const int32_t wanted = options->block > 0 ? options->block : kDefaultBlock;
  signal->samples = malloc((size_t)wanted * sizeof *signal->samples);
  signal->volts = options->fullScale > 0.0 ? options->fullScale : 1.0;
  bool good;
  if (!signal->samples) {
    good = complain("out of memory");
  } else if (options->rate > 0.0) {
    good = readText(options, file, wanted, signal);
  } else {
    good = readAudio(options, wanted, signal);
  }
  fclose(file);
  return good;
}

/* SineWave makes each tone at its own frequency and phase, Add1D joins them. */
static bool makeSignal(const Options* options, Signal* signal) {
  signal->n = options->block > 0 ? options->block : kDefaultBlock;
  signal->rate = kOwnRate;
  signal->volts = 1.0;
  snprintf(signal->title, sizeof signal->title, "The meter's own signal");
  signal->samples = calloc((size_t)signal->n, sizeof *signal->samples);
  double* tone = malloc((size_t)signal->n * sizeof *tone);
  bool good = (signal->samples && tone) || complain("out of memory");
  for (int i = 0; good && i < kOwnToneCount; ++i) {
    double phase = kOwnTones[i].phase;
    good = check(SineWave(signal->n, kOwnTones[i].level * M_SQRT2,
                          kOwnTones[i].multiple * kOwnFundamental / kOwnRate, &phase, tone),
                 "SineWave") &&
           check(Add1D(signal->samples, tone, signal->n, signal->samples), "Add1D");
  }
  free(tone);
  return good;
}

/* True relative power of harmonic h of the meter's own signal. */
static double ownPower(int32_t h) {
  for (int i = 0; i < kOwnToneCount; ++i) {
    if (kOwnTones[i].multiple == h) return kOwnTones[i].level * kOwnTones[i].level;
  }
  return 0.0;
}

/*
 * Brings the peak to about 1000, by a power of two that changes no digit, and removes the mean. The
 * fixed thresholds of HarmonicAnalyzer then act alike on a millivolt and on ten volts, and an
 * offset cannot be taken for the fundamental nor spread over it.
 */
static bool normalise(Signal* signal, const char* name) {
  double mean;
  double rms;
  double largest = 0.0;
  for (int32_t i = 0; i < signal->n; ++i) largest = fmax(largest, fabs(signal->samples[i]));
  if (largest == 0.0) return complain("%s: silence: every sample is zero", name);
  int exponent;
  largest = ldexp(frexp(largest, &exponent), 10);
  exponent -= 10;
  for (int32_t i = 0; i < signal->n; ++i) signal->samples[i] = ldexp(signal->samples[i], -exponent);
  signal->volts = ldexp(signal->volts, exponent);
  /* RMS of what is left, not StdDev: the variance of equal samples is rounding, not zero. */
  if (!check(Mean(signal->samples, signal->n, &mean), "Mean") ||
      !check(LinEv1D(signal->samples, signal->n, 1.0, -mean, signal->samples), "LinEv1D") ||
      !check(RMS(signal->samples, signal->n, &rms), "RMS")) {
    return false;
  }
  return rms > 1e-10 * largest || complain("%s: silence: every sample has the same value", name);
}

/* ScaledWindow divides by the coherent gain, so a bin reads the RMS power of a tone upon it. */
static bool windowedSpectrum(const Signal* signal, int32_t selector, double* work, double* power,
                             double* df, WindowProperties* properties) {
  return check(Copy1D(signal->samples, signal->n, work), "Copy1D") &&
         check(ScaledWindow(work, signal->n, selector, properties), "ScaledWindow") &&
         check(AutoPowerSpectrum(work, signal->n, 1.0 / signal->rate, power, df),
               "AutoPowerSpectrum");
}

/*
 * HarmonicAnalyzer finds the strongest tone and interpolates its frequency between the bins, which
 * it does well everywhere. Its window 7 interpolates for the four-term window, so that is the one
 * applied here, whichever the levels are read under. Its amplitudes are not used: they are a power
 * on a bin and infinite midway between two. It clears the lowest bins of the spectrum that it gets,
 * and this spectrum is for it alone.
 */
static bool findFundamental(const Signal* signal, const char* name, double* work, double* power,
                            double* frequency) {
  WindowProperties properties;
  double df;
  double amplitude;
  double distortion;
  double distortionPlusNoise;
  if (!windowedSpectrum(signal, FATHOM_WINDOW_FOUR_TERM_BLACKMAN_HARRIS, work, power, &df,
                        &properties)) {
    return false;
  }
  const AnalysisStatus status =
      HarmonicAnalyzer(power, signal->n / 2, signal->n, 1, 7, signal->rate, signal->rate / 4.0,
                       &amplitude, frequency, &distortion, &distortionPlusNoise);
  if (status == FATHOM_ERR_INDEX_LENGTH) {
    return complain("%s: the strongest tone lies too near half the sampling rate", name);
  }
  return check(status, "HarmonicAnalyzer");
}

static int32_t nearestBin(double frequency, double df) {
  return (int32_t)(frequency / df + 0.5);
}

/*
 * Noise per bin near bin `centre`: the median of the nearest bins that no tone occupies. The median
 * is not moved by a stray tone among them; that of noise power is ln 2 times its mean.
 */
static bool noiseFloor(const double* power, const bool* occupied, int32_t bins, int32_t centre,
                       double* density) {
  double nearest[kFloorBins];
  int32_t count = 0;
  for (int32_t d = 0; d < bins && count < kFloorBins - 1; ++d) {
    if (centre - d >= 0 && !occupied[centre - d]) nearest[count++] = power[centre - d];
    if (d > 0 && centre + d < bins && !occupied[centre + d]) nearest[count++] = power[centre + d];
  }
  *density = 0.0;
  if (count == 0) return true;
  if (!check(Median(nearest, count, density), "Median")) return false;
  *density /= M_LN2;
  return true;
}

static void occupy(bool* occupied, int32_t bins, int32_t centre, int32_t half) {
  for (int32_t j = centre - half; j <= centre + half; ++j) {
    if (j >= 0 && j < bins) occupied[j] = true;
  }
}

/* Turns a power into an upper bound where noise or the window's skirts hide the true value. */
static void judge(Harmonic* value, double noise, double floor) {
  const double threshold = fmax(3.0 * noise, floor);
  value->below = !(value->power > threshold);
  if (value->below) value->power = fmax(fmax(value->power, 0.0) + 3.0 * noise, floor);
}

/*
 * PowerFrequencyEstimate sums the whole main lobe of a tone and divides by the window's noise
 * bandwidth: the right power on a bin, midway, and anywhere between. It truncates the search
 * frequency to a bin, hence the half bin that is added.
 */
static bool tonePower(const Measurement* m, const Window* window, double enbw, double frequency,
                      double* centre, double* power) {
  return check(PowerFrequencyEstimate(m->power, m->bins, frequency + 0.5 * m->df, enbw, 0.0, m->df,
                                      window->span, centre, power),
               "PowerFrequencyEstimate");
}

/* Refuses what is no steady tone in reach of the block; then makes its power that of 1. */
static bool measureFundamental(const Signal* signal, const char* name, const Window* window,
                               double enbw, double fundamental, Measurement* m) {
  const int32_t half = window->span / 2;
  const int32_t k1 = nearestBin(fundamental, m->df);
  double centre;
  double power;
  double lowest;
  double total;
  if (!check(Sum1D(m->power, half + 1, &lowest), "Sum1D") ||
      !check(Sum1D(m->power, m->bins, &total), "Sum1D")) {
    return false;
  }
  if (k1 <= window->span || lowest > 0.5 * total) {
    return complain("%s: the strongest tone lies below %g Hz, too low for a block of %d samples",
                    name, (window->span + 0.5) * m->df, (int)signal->n);
  }
  if (k1 + half >= m->bins) {
    return complain("%s: the strongest tone lies too near half the sampling rate", name);
  }
  if (!tonePower(m, window, enbw, fundamental, &centre, &power)) return false;
  /* A steady tone has its centre of power where its peak is interpolated. */
  if (!(fabs(centre - fundamental) < 0.2 * m->df)) {
    return complain("%s: no steady tone: the strongest is read at %g Hz and at %g Hz", name,
                    fundamental, centre);
  }
  m->level = sqrt(power) * signal->volts;
  m->lowest = (half + 0.5) * m->df;
  return check(LinEv1D(m->power, m->bins, 1.0 / power, 0.0, m->power), "LinEv1D");
}

/* `work` and `occupied` are scratch. */
static bool measureTones(const char* name, const Window* window, int32_t harmonics, double enbw,
                         double fundamental, double* work, bool* occupied, Measurement* m) {
  const int32_t half = window->span / 2;
  const double floor = pow(10.0, window->floor / 10.0);
  double distortion = 0.0;
  double scatter = 0.0; /* variances: of the harmonics' powers, and of bands without a tone */
  double emptyScatter = 0.0;
  double share = 0.0; /* noise in the fundamental's band */
  double rest;

  memset(occupied, 0, (size_t)m->bins * sizeof *occupied);
  occupy(occupied, m->bins, 0, half);
  for (m->count = 0; m->count < harmonics; ++m->count) {
    const double frequency = (m->count + 1) * fundamental;
    if (!(frequency / m->df + 0.5 + half < m->bins)) break;
    m->harmonics[m->count].frequency = frequency;
    occupy(occupied, m->bins, nearestBin(frequency, m->df), half);
  }
  for (int32_t h = 0; h < m->count; ++h) {
    Harmonic* harmonic = &m->harmonics[h];
    double density;
    double centre;
    if (!noiseFloor(m->power, occupied, m->bins, nearestBin(harmonic->frequency, m->df),
                    &density) ||
        !tonePower(m, window, enbw, harmonic->frequency, &centre, &harmonic->power)) {
      return false;
    }
    density /= enbw;
    if (h == 0) {
      harmonic->power = 1.0; /* by definition, but for rounding */
      share = window->span * density;
    } else {
      harmonic->power -= window->span * density; /* the noise that lies in the band */
    }
    const double empty = window->span * window->kurtosis * density * density;
    const double variance = empty + 2.0 * window->kurtosis * density * fmax(harmonic->power, 0.0);
    harmonic->uncertainty = 2.0 * sqrt(variance);
    if (h == 0) continue;
    distortion += harmonic->power;
    scatter += variance;
    emptyScatter += empty;
    judge(harmonic, sqrt(empty), floor);
  }
  m->distortion.power = distortion;
  m->distortion.uncertainty = 2.0 * sqrt(scatter);
  judge(&m->distortion, sqrt(emptyScatter), floor);

  /* What is left without the offset and the fundamental; the noise beneath the latter is put back.
     The bands are cleared rather than subtracted: the difference would be lost in rounding. */
  if (!check(Copy1D(m->power, m->bins, work), "Copy1D") ||
      !check(Clear1D(work, half + 1), "Clear1D") ||
      !check(Clear1D(work + nearestBin(fundamental, m->df) - half, window->span), "Clear1D") ||
      !check(Sum1D(work, m->bins, &rest), "Sum1D")) {
    return false;
  }
  rest = rest / enbw + share;
  const double noise = fmax(rest - distortion, 0.0);
  if (noise > 1.0) return complain("%s: no tone stands out of the noise", name);
  m->distortionPlusNoise.power = rest;
  m->distortionPlusNoise.uncertainty =
      2.0 * sqrt(scatter + noise * noise * window->kurtosis / m->bins);
  judge(&m->distortionPlusNoise, 0.0, floor);
  return true;
}

static bool measure(const Options* options, Signal* signal, Measurement* m) {
  const char* name = options->file ? options->file : "own signal";
  /* NOLINTNEXTLINE(clang-analyzer-optin.portability.UnixAPI): the block is never empty */
  double* work = malloc((size_t)signal->n * sizeof *work);
  bool* occupied = malloc((size_t)signal->n * sizeof *occupied);
  WindowProperties properties;
  double fundamental;
  m->bins = signal->n / 2;
  m->power = malloc((size_t)m->bins * sizeof *m->power);
  const bool good =
      ((work && occupied && m->power) || complain("out of memory")) && normalise(signal, name) &&
      findFundamental(signal, name, work, m->power, &fundamental) &&
      windowedSpectrum(signal, options->window->selector, work, m->power, &m->df, &properties) &&
      measureFundamental(signal, name, options->window, properties.equivalentNoiseBandwidth,
                         fundamental, m) &&
      measureTones(name, options->window, options->harmonics, properties.equivalentNoiseBandwidth,
                   fundamental, work, occupied, m);
  free(work);
  free(occupied);
  return good;
}

/* Five digits with the prefix that leaves one to three of them before the point. */
static void formatLevel(double volts, char text[32]) {
  static const char* const kUnits[] = {"fV", "pV", "nV", "uV", "mV", "V", "kV", "MV"};
  char digits[32];
  snprintf(digits, sizeof digits, "%.4e", volts);
  const int exponent = atoi(strchr(digits, 'e') + 1); /* after rounding: 999.996 mV is 1 V */
  if (exponent < -15 || exponent > 8) {
    snprintf(text, 32, "%.4e V", volts);
    return;
  }
  const int step = (exponent + 15) / 3;
  const int before = exponent + 15 - 3 * step;
  snprintf(text, 32, "%.*f %s", 4 - before, volts / pow(10.0, 3 * step - 15), kUnits[step]);
}

static double scatterDecibels(const Harmonic* value) {
  return decibels(1.0 + value->uncertainty / value->power);
}

static void printRatio(const char* name, const Harmonic* value) {
  const char* mark = value->below ? "<" : " ";
  printf("%-5s %s %10.6f %%  %s %8.2f dB", name, mark, 100.0 * sqrt(value->power), mark,
         decibels(value->power));
  if (!value->below) printf("  +/- %.2f dB", scatterDecibels(value));
}

static void printTrueRatio(double truth, const Harmonic* value) {
  printf("   true %10.6f %%  %8.2f dB", 100.0 * sqrt(truth), decibels(truth));
  if (!value->below) printf("   error %+.4f dB", decibels(value->power / truth));
}

static void printReport(const Options* options, const Signal* signal, const Measurement* m) {
  const bool own = !options->file;
  printf("%s: %d samples at %.10g Hz, bins of %.6g Hz\n", signal->title, (int)signal->n,
         signal->rate, m->df);
  printf("Window: %s, %d bins a tone\n\n", options->window->title, (int)options->window->span);
  if (own) {
    printf(
        "                 Frequency (Hz)                          RMS level\n"
        "Harmonic       true   measured    error          true    measured  error (dB)"
        "   Relative (dB)\n");
  } else {
    printf("Harmonic   Frequency (Hz)      RMS level   Relative (dB)   +/- (dB)\n");
  }
  double distortion = 0.0; /* true ones */
  double everything = 0.0;
  for (int i = 1; i < kOwnToneCount; ++i) everything += kOwnTones[i].level * kOwnTones[i].level;
  for (int32_t h = 1; h <= m->count; ++h) {
    const Harmonic* harmonic = &m->harmonics[h - 1];
    const char* mark = harmonic->below ? "<" : " ";
    const double relative = decibels(harmonic->power);
    char level[32];
    formatLevel(m->level * sqrt(harmonic->power), level);
    if (!own) {
      printf("%8d   %14.3f  %s %11s   %s %11.2f", (int)h, harmonic->frequency, mark, level, mark,
             relative);
      if (!harmonic->below) printf("   %8.2f", scatterDecibels(harmonic));
      putchar('\n');
      continue;
    }
    const double power = ownPower(h);
    const double frequency = h * kOwnFundamental;
    char truth[32];
    if (h > 1) distortion += power;
    formatLevel(sqrt(power), truth);
    printf("%8d %10.3f %10.3f %+8.4f   %11s %s %9s", (int)h, frequency, harmonic->frequency,
           harmonic->frequency - frequency, power > 0.0 ? truth : "0 V", mark, level);
    if (harmonic->below || power == 0.0) {
      printf("            ");
    } else {
      printf("    %+8.4f", decibels(m->level * m->level * harmonic->power / power));
    }
    printf("   %s %11.2f\n", mark, relative);
  }
  putchar('\n');
  if (m->count < 2) {
    printf("THD   not measured: no harmonic lies below half the sampling rate\n");
  } else {
    printRatio("THD", &m->distortion);
    if (own) {
      printTrueRatio(distortion, &m->distortion);
    } else {
      printf("   (harmonics 2 to %d)", (int)m->count);
    }
    putchar('\n');
  }
  printRatio("THD+N", &m->distortionPlusNoise);
  if (own) {
    printTrueRatio(everything, &m->distortionPlusNoise);
  } else {
    printf("   (%.6g Hz to %.10g Hz)", m->lowest, signal->rate / 2.0);
  }
  putchar('\n');
}

/*
 * About two thousand columns, each drawn from the largest to the smallest of its bins (MaxMin1D),
 * in their order: no peak is lost, and the file stays small whatever the block.
 */
static void putSpectrum(const Measurement* m, double lowest, FILE* gnuplot) {
  const int32_t step = m->bins > 2048 ? m->bins / 2048 : 1;
  for (int32_t start = 0; start < m->bins; start += step) {
    double value[2];
    int32_t index[2];
    if (MaxMin1D(m->power + start, step, &value[0], &index[0], &value[1], &index[1]) != FATHOM_OK) {
      return;
    }
    for (int i = 0; i < 2; ++i) {
      const int which = (index[0] > index[1]) == (i == 0);
      if (i == 1 && index[0] == index[1]) break;
      fprintf(gnuplot, "%.10g %.3f\n", (start + index[which]) * m->df,
              fmax(decibels(value[which]), lowest));
    }
  }
}

static void putPlot(const Options* options, const Signal* signal, const Measurement* m,
                    double median, FILE* gnuplot) {
  const double fundamental = m->harmonics[0].frequency;
  const double nyquist = signal->rate / 2.0;
  const double noise = median > 0.0 ? decibels(median) : options->window->floor;
  const double lowest = fmax(20.0 * floor(noise / 20.0 - 1.0), -160.0);
  char text[1024];
  int shown = 70; /* of the title, in bytes, and no part of a character */
  if (strlen(signal->title) > 70) {
    while (shown > 0 && ((unsigned char)signal->title[shown] & 0xC0) == 0x80) --shown;
  }
  int length = snprintf(text, sizeof text, "%.*s%s\nFundamental %.2f Hz", shown, signal->title,
                        strlen(signal->title) > 70 ? "..." : "", fundamental);
  if (m->count > 1) {
    length += snprintf(text + length, sizeof text - (size_t)length, ", THD %s%.4g %%",
                       m->distortion.below ? "< " : "", 100.0 * sqrt(m->distortion.power));
  }
  snprintf(text + length, sizeof text - (size_t)length, ", THD+N %s%.4g %%",
           m->distortionPlusNoise.below ? "< " : "", 100.0 * sqrt(m->distortionPlusNoise.power));
  fputs("set title noenhanced ", gnuplot);
  putQuoted(text, gnuplot);
  fprintf(gnuplot,
          "\nset xlabel 'Frequency (Hz)'\n"
          "set ylabel 'Level relative to the fundamental (dB)'\n"
          "set xrange [0:%.10g]\nset yrange [%.0f:15]\nset ytics 20\n"
          "set rmargin 5\nset key top right\n$spectrum << end\n",
          nyquist, lowest);
  putSpectrum(m, lowest, gnuplot);
  fputs("end\n$harmonics << end\n", gnuplot);
  for (int32_t h = 0; h < m->count; ++h) {
    if (m->harmonics[h].below || decibels(m->harmonics[h].power) < lowest) continue;
    fprintf(gnuplot, "%.10g %.3f %d\n", m->harmonics[h].frequency, decibels(m->harmonics[h].power),
            (int)h + 1);
  }
  fputs(
      "end\n"
      "plot $spectrum with lines lw 1.3 lc '#4477aa' title 'Spectrum', "
      "$harmonics with points pt 6 ps 1.4 lw 2 lc '#cc3311' title 'Harmonics, by number'",
      gnuplot);
  /* Numbers that would run into each other are left out. */
  if (fundamental > 0.015 * nyquist) {
    fputs(", $harmonics using 1:2:3 with labels offset 0,0.9 textcolor '#cc3311' notitle", gnuplot);
  }
}

static bool drawPlot(const Options* options, const Signal* input, const Measurement* m) {
  double median;
  if (!check(Median(m->power, m->bins, &median), "Median")) return false;
  char trouble[kTroubleSize];
  FILE* gnuplot = openPlot(options->plot, 1200, 700, trouble);
  if (gnuplot) putPlot(options, input, m, median, gnuplot);
  if (gnuplot && closePlot(gnuplot, options->plot, trouble)) return true;
  return complain("%s: %s", options->plot, trouble);
}

int main(int argc, char** argv) {
  Options options = {.window = &kWindows[0], .harmonics = 10};
  Signal signal = {0};
  Measurement measurement = {0};
  bool help = false;
  bool good = parseOptions(argc, argv, &options, &help);
  if (help) {
    fputs(kHelp, stdout);
  } else if (good) {
    good = (options.file ? readFile(&options, &signal) : makeSignal(&options, &signal)) &&
           measure(&options, &signal, &measurement);
    if (good) printReport(&options, &signal, &measurement);
    if (good && options.plot) good = drawPlot(&options, &signal, &measurement);
  }
  if (fflush(stdout) != 0 || ferror(stdout)) good = complain("cannot write the report");
  free(signal.samples);
  free(measurement.power);
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
