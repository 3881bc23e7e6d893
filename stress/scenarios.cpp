#include "stress/scenarios.h"

#include <stdexcept>

namespace stress {

std::vector<Scenario> const& Scenarios() {
  static Table const all = [] {
    Table joined;
    for (auto const table : {CoreScenarios, ConfigScenarios, ApiScenarios, LogsScenarios, LangScenarios,
                             BrowseScenarios, SystemScenarios, CryptoScenarios})
      for (Scenario& scenario : table()) joined.push_back(std::move(scenario));
    return joined;
  }();
  return all;
}

Scenario const& Find(std::string const& name) {
  for (Scenario const& scenario : Scenarios())
    if (name == scenario.name) return scenario;
  throw std::runtime_error("no scenario " + name);
}

}  // namespace stress
