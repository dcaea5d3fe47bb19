#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/reference/Comparison.h"
#include "tests/reference/Expressions.h"
#include "tests/reference/Messages.h"
#include "tests/reference/Random.h"
#include "tests/reference/World.h"

#ifndef STRINGRESOLVER_REFERENCE_CASES
#error "The build says how many cases an ordinary run has"
#endif

namespace reference {
namespace {

constexpr std::size_t kTextsPerWorld = 200;
constexpr std::size_t kMostReports = 5;

std::uint64_t FromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 0);
}

std::string Report(const World& world, const std::vector<std::string>& texts) {
  const std::vector<std::string> shortest = Shrink(world, texts);
  std::string report = "seed " + std::to_string(world.seed) + " (" +
                       (world.assembly ? "assembly" : "C") + ", pointers of " +
                       std::to_string(world.pointerSize) + " bytes)\n";
  for (const std::string& text : shortest) report += "  text: " + Quoted(text) + "\n";
  report += "  found with: " + Quoted(texts.back()) + "\n" + Compare(world, shortest);
  return report + "  again: STRINGRESOLVER_REFERENCE_SEED=" + std::to_string(world.seed) +
         " STRINGRESOLVER_REFERENCE_CASES=" + std::to_string(kTextsPerWorld) + "\n";
}

/// Resolves the texts of one world; the texts of a difference, if there is one.
std::vector<std::string> RunWorld(const World& world, Tally* tally) {
  Random random(world.seed);
  Expressions expressions(world, &random);
  for (std::size_t done = 0; done < kTextsPerWorld;) {
    // Several texts on one object: what one leaves behind is the next one's start.
    Pair pair(world);
    std::vector<std::string> texts;
    const std::size_t row = 1 + random.Below(6);
    for (; texts.size() < row && done < kTextsPerWorld; ++done) {
      texts.push_back(expressions.Next());
      const std::string before = pair.Message();
      const std::string differences = pair.Resolve(texts.back());
      ++tally->cases;
      if (!differences.empty()) return texts;
      if (pair.succeeded) {
        ++tally->successes;
      } else if (texts.size() == 1 || pair.Message() != before) {
        // A failure that leaves an earlier text's message standing is counted only when it is new.
        ++tally->failures[pair.Message().empty() ? "" : MessageKind(pair.Message())];
      }
    }
  }
  return {};
}

void Print(const Tally& tally) {
  std::printf("%zu cases, %zu succeed (%.1f %%)\n", tally.cases, tally.successes,
              100.0 * static_cast<double>(tally.successes) / static_cast<double>(tally.cases));
  for (const auto& [message, count] : tally.failures) {
    std::printf("%9zu  %s\n", count, message.empty() ? "(no message)" : message.c_str());
  }
}

// STRINGRESOLVER_REFERENCE_CASES and STRINGRESOLVER_REFERENCE_SEED in the environment choose
// another number of cases and another first seed.
TEST(Reference, AgreesWithTheResolverOnGeneratedExpressions) {
  const std::uint64_t cases =
      FromEnvironment("STRINGRESOLVER_REFERENCE_CASES", STRINGRESOLVER_REFERENCE_CASES);
  const std::uint64_t firstSeed = FromEnvironment("STRINGRESOLVER_REFERENCE_SEED", 1);
  Tally tally;
  std::size_t reports = 0;
  for (std::uint64_t seed = firstSeed; tally.cases < cases; ++seed) {
    const World world(seed);
    const std::vector<std::string> texts = RunWorld(world, &tally);
    if (texts.empty()) continue;
    ADD_FAILURE() << Report(world, texts);
    if (++reports == kMostReports) break;
  }
  Print(tally);
  if (reports > 0 || cases < STRINGRESOLVER_REFERENCE_CASES) return;

  // What the generator is worth: it must not only fail, and must fail in every way there is.
  EXPECT_GE(tally.successes * 2, tally.cases);
  EXPECT_GT(tally.failures[""], 0U) << "no failure without a message";
  for (const std::string& message : kMessages) {
    EXPECT_GT(tally.failures[message], 0U) << "never met: " << message;
  }
  for (const auto& [message, count] : tally.failures) {
    const bool known = std::find(kMessages.begin(), kMessages.end(), message) != kMessages.end();
    EXPECT_TRUE(known || message.empty())
        << "not in the table: " << message << " (" << count << ")";
  }
}

}  // namespace
}  // namespace reference
