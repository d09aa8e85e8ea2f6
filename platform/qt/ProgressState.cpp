#include "platform/qt/ProgressState.h"

#include <algorithm>
#include <cmath>

namespace platform {

int ProgressState::position() const {
    const double fraction = (value - minimum) / (maximum - minimum);
    if (indeterminate)
        return finished ? steps : 0;
    if (std::isnan(fraction) || maximum <= minimum)
        return 0;
    return static_cast<int>(std::lround(std::clamp(fraction, 0.0, 1.0) * steps));
}

} // namespace platform
