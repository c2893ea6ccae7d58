/// Says in the log what a computation left out.
#include "calibrator/RejectionLog.h"

#include "Log.h"

namespace velmora {

void LogRejected(const std::vector<Rejected>& rejected) {
  for (const Rejected& item : rejected) {
    if (item.point == Rejected::WHOLE_VIEW) {
      Log::warn("View %zu is left out: %s (%.2f px).", item.view, item.reason.c_str(), item.residual);
    } else {
      Log::warn("Point %d of view %zu is left out: %s (%.2f px).", item.point, item.view, item.reason.c_str(),
                item.residual);
    }
  }
}

void LogRejectedOfPair(const std::vector<Rejected>& rejected) {
  for (const Rejected& item : rejected) {
    const char* const side = item.camera == 0 ? "left" : "right";
    if (item.point == Rejected::WHOLE_VIEW) {
      Log::warn("The %s image of view %zu is left out: %s (%.2f px).", side, item.view, item.reason.c_str(),
                item.residual);
    } else {
      Log::warn("Point %d of the %s image of view %zu is left out: %s (%.2f px).", item.point, side,
                item.view, item.reason.c_str(), item.residual);
    }
  }
}

void LogRecountedOfPair(const std::vector<Recounted>& recounted) {
  for (const Recounted& image : recounted) {
    Log::warn("The points of the %s image of view %zu were counted from another end of the grid: put right.",
              image.camera == 0 ? "left" : "right", image.view);
  }
}

}  // namespace velmora
