#include "apps/zan/HelpFormatter.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace zan::cli {

namespace {

// Where the texts of options begin.
constexpr std::size_t textColumn = 30;

bool hasTextColumn(std::string_view line) {
    return line.size() > textColumn && line.starts_with("  ") &&
           line.substr(textColumn - 2, 2) == "  " && line[textColumn] != ' ';
}

std::size_t indentOf(std::string_view line) {
    return hasTextColumn(line) ? textColumn : std::min(line.find_first_not_of(' '), line.size());
}

// The last blank that leaves the line within the width; behind that the first one there is.
std::size_t breakOf(std::string_view line, std::size_t indent) {
    std::size_t const last = line.rfind(' ', helpWidth);
    return last != std::string_view::npos && last > indent ? last : line.find(' ', helpWidth);
}

std::string wrappedLine(std::string line) {
    std::size_t const indent = indentOf(line);
    std::string text;
    while (line.size() > helpWidth) {
        std::size_t const end = breakOf(line, indent);
        if (end == std::string::npos) {
            break;
        }
        text += line.substr(0, end) + "\n";
        line = std::string(indent, ' ') + line.substr(end + 1);
    }
    return text + line;
}

class Formatter final : public CLI::Formatter {
public:
    std::string make_help(CLI::App const* app, std::string name,
                          CLI::AppFormatMode mode) const override {
        return wrapped(CLI::Formatter::make_help(app, std::move(name), mode));
    }
};

} // namespace

std::string wrapped(std::string_view text) {
    std::string lines;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('\n'), text.size());
        lines += wrappedLine(std::string(text.substr(0, end)));
        lines += end < text.size() ? "\n" : "";
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::shared_ptr<CLI::FormatterBase> helpFormatter() {
    return std::make_shared<Formatter>();
}

} // namespace zan::cli
