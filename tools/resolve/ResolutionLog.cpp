#include "tools/resolve/ResolutionLog.h"

#include <utility>

namespace tool {

void ResolutionLog::Start(std::string givenText, std::string preparedText) {
  given = std::move(givenText);
  prepared = std::move(preparedText);
  events.clear();
  dropped = 0;
  confirmed = false;
}

void ResolutionLog::Add(HostEvent event) {
  if (events.size() < kMostEvents) {
    events.push_back(std::move(event));
  } else {
    ++dropped;
  }
}

}  // namespace tool
