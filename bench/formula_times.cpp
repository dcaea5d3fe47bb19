// Times formulas of the program's scalars in muParser, a library for formulas alone.
//
//   formula_times FORMULA...
//
// One line a formula: median nanoseconds to read and evaluate it, and the answer, a number or
// "error"; tab-separated.

#include <muParser.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
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
  using Clock = std::chrono::steady_clock;
  constexpr int kRounds = 15;
  constexpr int kTimes = 2000;
  std::vector<double> rounds;
  for (int round = 0; round < kRounds; ++round) {
    const auto start = Clock::now();
    for (int i = 0; i < kTimes; ++i) {
      try {
        parser.SetExpr(formula);
        parser.Eval();
      } catch (const mu::Parser::exception_type&) {
        continue;
      }
    }
    rounds.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count() /
                     kTimes);
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
