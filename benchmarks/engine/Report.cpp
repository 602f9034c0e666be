#include "benchmarks/engine/Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

using Cells = std::array<std::string, 6>;

std::string number(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    std::string result = text;
    std::size_t const point = result.find('.');
    std::size_t const whole = point == std::string::npos ? result.size() : point;
    std::size_t const first = value < 0 ? 1 : 0;
    for (std::size_t at = whole; at > first + 3; at -= 3) {
        result.insert(at - 3, ",");
    }
    return result;
}

std::string verdict(Row const& row) {
    if (row.load < 0) {
        return "";
    }
    return row.load <= 1 ? "holds" : "MISSES";
}

Cells cellsOf(Row const& row) {
    return {row.work, row.ours, row.peer, row.ratio, row.must, verdict(row)};
}

std::string record(Row const& row) {
    std::ostringstream line;
    line << row.work << '\t' << row.ours << '\t' << row.peer << '\t' << row.ratio << '\t'
         << row.must << '\t' << row.load << '\n';
    return line.str();
}

Row readRecord(std::string const& line) {
    std::istringstream fields(line);
    Row row;
    for (std::string* text : {&row.work, &row.ours, &row.peer, &row.ratio, &row.must}) {
        std::getline(fields, *text, '\t');
    }
    fields >> row.load;
    return row;
}

void writeAll(int file, std::string const& text) {
    for (std::size_t written = 0; written < text.size();) {
        ssize_t const now = write(file, text.data() + written, text.size() - written);
        if (now < 0) {
            return;
        }
        written += static_cast<std::size_t>(now);
    }
}

std::string readAll(int file) {
    std::string text;
    std::array<char, 4096> part;
    for (ssize_t size = 0; (size = read(file, part.data(), part.size())) > 0;) {
        text.append(part.data(), static_cast<std::size_t>(size));
    }
    return text;
}

[[noreturn]] void measureInChild(std::function<Rows()> const& measure, int output) {
    int status = 0;
    try {
        for (Row const& row : measure()) {
            writeAll(output, record(row));
        }
    } catch (std::exception const& e) {
        std::cerr << "zan-bench-engine: " << e.what() << std::endl;
        status = 1;
    }
    // What is still held is not worth the time that its orderly end takes.
    _exit(status);
}

} // namespace

std::string amount(double value, std::string const& unit) {
    double const size = std::abs(value);
    int const decimals = size < 10 ? 2 : size < 100 ? 1 : 0;
    return number(value, decimals) + (unit.empty() ? "" : " ") + unit;
}

void requireAtLeast(Row& row, double ratio, double bound) {
    row.ratio = number(ratio, 2);
    row.must = "≥ " + number(bound, 1);
    row.load = bound / ratio;
}

void requireAtMost(Row& row, double ratio, double bound) {
    row.ratio = number(ratio, 2);
    row.must = "≤ " + number(bound, 1);
    row.load = ratio / bound;
}

void requireAmount(Row& row, double value, double bound, std::string const& unit) {
    row.must = "≤ " + amount(bound, unit);
    row.load = std::max(0.0, value / bound);
}

Rows measureApart(std::function<Rows()> const& measure) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    pid_t const child = fork();
    if (child == 0) {
        close(ends[0]);
        measureInChild(measure, ends[1]);
    }
    close(ends[1]);
    std::istringstream lines(child > 0 ? readAll(ends[0]) : "");
    close(ends[0]);
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a measurement failed");
    }
    Rows rows;
    for (std::string line; std::getline(lines, line);) {
        rows.push_back(readRecord(line));
    }
    return rows;
}

void printTable(Rows const& rows) {
    std::vector<Cells> lines = {{"work : measured against", "ours", "peer", "ratio", "must", ""}};
    std::ranges::transform(rows, std::back_inserter(lines), cellsOf);
    // Characters, not bytes: the signs of the bounds take three of these.
    auto const width = [](std::string const& text) {
        return static_cast<std::size_t>(
            std::ranges::count_if(text, [](char each) { return (each & 0xC0) != 0x80; }));
    };
    std::array<std::size_t, 6> widths{};
    for (Cells const& cells : lines) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            widths[i] = std::max(widths[i], width(cells[i]));
        }
    }
    for (Cells const& cells : lines) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            std::string const padding(widths[i] - width(cells[i]), ' ');
            bool const isText = i == 0 || i + 1 == cells.size();
            std::cout << (isText ? cells[i] + padding : padding + cells[i]) << "  ";
        }
        std::cout << '\n';
    }
}

void printRecords(Rows const& rows) {
    for (Row const& row : rows) {
        std::cout << record(row);
    }
}

} // namespace bench
