#include "layout/leveltable.h"

#include <sstream>
#include <stdexcept>

namespace nativevrl {

bool useJavaDimensionOrder = false;

void refuseProduct(unsigned a, unsigned b) {
    std::ostringstream text;
    text << "multiplication overflow (type 'unsigned int'): " << a << " * " << b;
    throw std::overflow_error(text.str());
}

LevelTable buildLevelTable(const std::vector<unsigned>& dimensions, const IMapFunction<unsigned, unsigned>& order) {
    if (dimensions.empty()) {
        return {{1, 1, 1}};
    }
    LevelTable levels(dimensions.size());
    LevelWalker walker;
    for (unsigned i = 0; i < dimensions.size(); ++i) {
        const unsigned level = order.map(i);
        levels[level] = walker.next(dimensions[level]);
    }
    return levels;
}

}  // namespace nativevrl
