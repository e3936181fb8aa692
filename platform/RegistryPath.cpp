#include "RegistryPath.h"

#include <algorithm>

namespace Platform {

std::vector<WideText> SplitPath(const WideText& path)
{
    std::vector<WideText> names;
    std::size_t nBegin = 0;
    while (nBegin < path.size()) {
        const std::size_t nEnd = std::min(path.find('\\', nBegin), path.size());
        if (nEnd != nBegin) {
            names.push_back(path.substr(nBegin, nEnd - nBegin));
        }
        nBegin = nEnd + 1;
    }
    return names;
}

} // namespace Platform
