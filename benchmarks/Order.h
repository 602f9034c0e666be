/// The two messages that the benchmarks work on, as data that both sides fill in: a new order with
/// twelve fields in its body, and the same order with two repeating groups of five instances.
///
/// The header is read by sources of two language levels and holds plain data only.
#ifndef ZANENGINE_BENCHMARKS_ORDER_H
#define ZANENGINE_BENCHMARKS_ORDER_H

namespace order {

enum class Kind { text, character, whole, decimal };

/// One field: the text that stands on the wire, and the value that an application has in hand.
struct Field {
    int tag;
    Kind kind;
    char const* text;
    long whole;
    double decimal;
};

enum : int {
    beginStringTag = 8,
    msgTypeTag = 35,
    bodyFields = 12,
    groups = 2,
    instances = 5,
    instanceFields = 4,
    plainFields = bodyFields + 2,
    groupedFields = plainFields + groups * instances * instanceFields
};

constexpr char const* beginString = "FIX.4.4";
constexpr char const* msgType = "D";

/// In the order in which an application fills in an order, which is not the order of the tags.
constexpr Field body[bodyFields] = {
    {11, Kind::text, "ORD-20261121-0042", 0, 0},
    {1, Kind::text, "ACC-7731", 0, 0},
    {55, Kind::text, "EURUSD", 0, 0},
    {54, Kind::character, "1", 0, 0},
    {38, Kind::whole, "250000", 250000, 0},
    {40, Kind::character, "2", 0, 0},
    {44, Kind::decimal, "1.08425", 0, 1.08425},
    {59, Kind::character, "0", 0, 0},
    {60, Kind::text, "20261121-14:05:09.117", 0, 0},
    {21, Kind::character, "1", 0, 0},
    {207, Kind::text, "XLON", 0, 0},
    {15, Kind::text, "USD", 0, 0},
};

struct Group {
    int countTag;
    Field fields[instanceFields];
};

constexpr Group repeating[groups] = {
    {453,
     {{448, Kind::text, "BROKER-12", 0, 0},
      {447, Kind::character, "D", 0, 0},
      {452, Kind::whole, "11", 11, 0},
      {523, Kind::text, "DESK-4", 0, 0}}},
    {78,
     {{79, Kind::text, "ALLOC-0007", 0, 0},
      {661, Kind::whole, "99", 99, 0},
      {80, Kind::decimal, "50000", 0, 50000},
      {467, Kind::text, "IND-0001", 0, 0}}},
};

} // namespace order

#endif
