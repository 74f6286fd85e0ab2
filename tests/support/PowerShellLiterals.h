#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tw::test {

/// The texts between single quotes in a script, read as PowerShell reads them. It takes the quotes of typography
/// (U+2018 to U+201B) for single quotes too, and two of any kind in a row for the second of them.
inline std::vector<std::string> powerShellLiterals(std::string_view script)
{
    auto const quoteBytes = [&script]() -> std::size_t {
        for (std::string_view const quote : {"'", "\u2018", "\u2019", "\u201A", "\u201B"})
            if (script.starts_with(quote))
                return quote.size();
        return 0;
    };
    std::vector<std::string> literals;
    bool isInside = false;
    while (!script.empty()) {
        auto quote = quoteBytes();
        if (quote > 0) {
            script.remove_prefix(quote);
            quote = isInside ? quoteBytes() : 0;
            if (quote == 0) {
                isInside = !isInside;
                if (isInside)
                    literals.emplace_back();
                continue;
            }
        }
        auto const bytes = quote > 0 ? quote : 1;
        if (isInside)
            literals.back() += script.substr(0, bytes);
        script.remove_prefix(bytes);
    }
    return literals;
}

/// Names that mean something to a shell, or that a shell could take apart.
inline std::vector<std::string> const namesForPowerShell{"it's",
                                                         "'",
                                                         "''",
                                                         "\u2018\u2019\u201A\u201B",
                                                         "\u2019; rm x; \u2018",
                                                         "'\u2019",
                                                         "line\nend\r\n",
                                                         "$x `y`",
                                                         "-rf\n",
                                                         "\u00E4\u65E5",
                                                         "\U0001F600\u2019",
                                                         "[a]*?",
                                                         "@(1),'",
                                                         "--%"};

} // namespace tw::test
