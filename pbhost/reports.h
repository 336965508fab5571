// What the engine says on its report channels while it builds a graph.
//
// The channels take plain functions, so there is one collector for the process: it listens while a
// Reports object stands.
#pragma once

#include <string>
#include <vector>

namespace pbhost {

class Reports {
public:
    Reports();
    ~Reports();
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    const std::vector<std::string>& info() const;     // for the user, as they came
    const std::vector<std::string>& errorLog() const; // name, stage and the driver's log, one each
};

} // namespace pbhost
