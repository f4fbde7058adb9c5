// fmt's own functions, compiled once: with its headers alone, every source that formats something compiles them again.
#include <fmt/format-inl.h>
#include <locale>

FMT_BEGIN_NAMESPACE
namespace detail {
template auto thousands_sep_impl<char>(locale_ref) -> thousands_sep_result<char>;
template auto thousands_sep_impl<wchar_t>(locale_ref) -> thousands_sep_result<wchar_t>;
template auto decimal_point_impl(locale_ref) -> char;
template auto decimal_point_impl(locale_ref) -> wchar_t;
template locale_ref::locale_ref(const std::locale&);
template auto locale_ref::get<std::locale>() const -> std::locale;
template auto dragonbox::to_decimal(float) noexcept -> dragonbox::decimal_fp<float>;
template auto dragonbox::to_decimal(double) noexcept -> dragonbox::decimal_fp<double>;
template void buffer<char>::append(const char*, const char*);
template void vformat_to(buffer<char>&, string_view, basic_format_args<FMT_BUFFER_CONTEXT(char)>, locale_ref);
} // namespace detail
FMT_END_NAMESPACE
