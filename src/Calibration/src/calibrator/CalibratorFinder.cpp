/// The calibrator's choice of a search.
#include "Calibrator.h"
#include "Log.h"
#include "finder/FinderChoice.h"

using namespace velmora;

void Calibrator::SetFinder(const int& finder) {
  if (!finder_->Set(finder)) Log::error("There is no finder %d.", finder);
}

int Calibrator::GetFinder() {
  return finder_->Get();
}

std::string Calibrator::WhyNotFound() {
  return DescribeFault(finder_->Fault());
}
