// Times formulas of the program's scalars in muParser, a library for formulas alone.
//
//   formula_times FORMULA...
//
// One line a formula: median nanoseconds to read and evaluate it, and the answer, a number or
// "error"; tab-separated.

#include <muParser.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace {

// As in program.c.
double x = 42;
double f = 1.5;
double d = 2.25;

std::string Answer(mu::Parser& parser, const std::string& formula) {
  try {
    parser.SetExpr(formula);
    return std::to_string(parser.Eval());
  } catch (const mu::Parser::exception_type&) {
    return "error";
  }
}

double Nanoseconds(mu::Parser& parser, const std::string& formula) {
  // Processor time: what else runs on the machine is not counted.
  constexpr double kNanosecondsOfTick = 1e9 / CLOCKS_PER_SEC;
  constexpr int kRounds = 15;
  constexpr int kTimes = 2000;
  std::vector<double> rounds;
  for (int round = 0; round < kRounds; ++round) {
    const std::clock_t start = std::clock();
    for (int i = 0; i < kTimes; ++i) {
      try {
        parser.SetExpr(formula);
        parser.Eval();
      } catch (const mu::Parser::exception_type&) {
        continue;
      }
    }
    rounds.push_back(static_cast<double>(std::clock() - start) * kNanosecondsOfTick / kTimes);
  }
  std::sort(rounds.begin(), rounds.end());
  return rounds[kRounds / 2];
}

}  // namespace

int main(int count, char** arguments) {
  mu::Parser parser;
  parser.DefineVar("x", &x);
  parser.DefineVar("f", &f);
  parser.DefineVar("d", &d);
  for (int i = 1; i < count; ++i) {
    const std::string formula = arguments[i];
    const std::string answer = Answer(parser, formula);
    std::printf("%.0f\t%s\n", Nanoseconds(parser, formula), answer.c_str());
  }
  return 0;
}
