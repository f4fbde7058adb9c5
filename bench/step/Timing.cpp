#include "bench/step/Timing.h"

#include <algorithm>
#include <chrono>
#include <iterator>

double SecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::vector<double> Medians(const std::vector<std::function<void()>>& contenders) {
    double once = 0;
    for (const auto& contender : contenders) {
        once += SecondsOf(contender);
    }
    const int repetitions = std::clamp(static_cast<int>(1.0 / once), 5, 200);
    std::vector<std::vector<double>> times(contenders.size());
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        for (std::size_t index = 0; index < contenders.size(); ++index) {
            times[index].push_back(SecondsOf(contenders[index]));
        }
    }
    std::vector<double> medians;
    std::transform(times.begin(), times.end(), std::back_inserter(medians), Median);
    return medians;
}
