#pragma once

#include <functional>
#include <vector>

/// Runs contenders in turns, so that what disturbs the machine disturbs all of them, between 5 and 200 times, for about
/// a second in all.
/// @return the median of each one's times, in seconds
std::vector<double> Medians(const std::vector<std::function<void()>>& contenders);

double SecondsOf(const std::function<void()>& work);

double Median(std::vector<double> values);
