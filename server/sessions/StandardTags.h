/// Where the tags of the standard stand in a message, and which of them belong together: all of
/// FIX 4.0 to FIXT.1.1 and FIX Latest.
///
/// Everything here is constant and may be used from any thread.
#ifndef ZANENGINE_SERVER_SESSIONS_STANDARDTAGS_H
#define ZANENGINE_SERVER_SESSIONS_STANDARDTAGS_H

namespace zan {
namespace server {

/// The part of a message that a tag belongs to.
enum class TagPlace : unsigned char { body, header, trailer };

namespace tags {

/// In the header a tag stands once, but those of the group of hops (627 to 630).
constexpr short header[] = {8,   9,   34,  35,  43,  49,  50,  52,   56,   57,  90,  91,
                            97,  115, 116, 122, 128, 129, 142, 143,  144,  145, 212, 213,
                            347, 369, 370, 627, 628, 629, 630, 1128, 1129, 1156};
constexpr short trailer[] = {10, 89, 93};

/// A field that tells a length, and the field whose value is as long and may hold separators.
struct Pair {
    int length;
    int data;
};

constexpr Pair pairs[] = {
    {90, 91},       {93, 89},       {95, 96},       {212, 213},     {348, 349},     {350, 351},
    {352, 353},     {354, 355},     {356, 357},     {358, 359},     {360, 361},     {362, 363},
    {364, 365},     {445, 446},     {618, 619},     {621, 622},     {1184, 1185},   {1277, 1278},
    {1280, 1281},   {1282, 1283},   {1397, 1398},   {1401, 1402},   {1403, 1404},   {1468, 1469},
    {1525, 1527},   {1578, 1579},   {1620, 1621},   {1664, 1665},   {1678, 1697},   {1733, 1734},
    {1871, 1872},   {1874, 1875},   {2072, 2073},   {2074, 2075},   {2111, 2112},   {2179, 2180},
    {2287, 2288},   {2351, 2352},   {2372, 2371},   {2481, 2482},   {2494, 2493},   {2522, 2521},
    {2637, 2638},   {2651, 2652},   {2665, 2666},   {2715, 2716},   {2718, 2719},   {2721, 2722},
    {2797, 2798},   {2802, 2801},   {2809, 2808},   {2815, 2814},   {40004, 40005}, {40008, 40009},
    {40978, 40979}, {40980, 40981}, {40982, 40983}, {40984, 40985}, {40986, 40987}, {40988, 40989},
    {41083, 41084}, {41101, 41102}, {41107, 41108}, {41256, 41257}, {41320, 41321}, {41324, 41325},
    {41458, 41459}, {41476, 41477}, {41482, 41483}, {41653, 41654}, {41710, 41711}, {41806, 41807},
    {41811, 41812}, {41873, 41874}, {41969, 41970}, {42025, 42026}, {42171, 42172}, {42451, 42452},
    {42652, 42653}, {42947, 42948}, {43109, 42684}, {43110, 42486}, {43111, 42982}};

// The tags of the pairs lie in two stretches.
constexpr unsigned behindLow = 2816;
constexpr unsigned firstHigh = 40004;
constexpr unsigned behindHigh = 43112;
constexpr unsigned behindPlaces = 1157;

/// By tag: the partner of a length, that of a data field as a negative number, or 0.
struct Partners {
    constexpr Partners() : low(), high() {
        for (Pair const& pair : pairs) {
            at(pair.length) = pair.data;
            at(pair.data) = -pair.length;
        }
    }
    constexpr int& at(int tag) {
        unsigned const index = static_cast<unsigned>(tag);
        return index < behindLow ? low[index] : high[index - firstHigh];
    }
    int low[behindLow];
    int high[behindHigh - firstHigh];
};

struct Places {
    constexpr Places() : of() {
        for (short const tag : header)
            of[tag] = TagPlace::header;
        for (short const tag : trailer)
            of[tag] = TagPlace::trailer;
    }
    TagPlace of[behindPlaces];
};

constexpr Partners partners;
constexpr Places places;

inline int partnerOf(int tag) {
    unsigned const index = static_cast<unsigned>(tag);
    if (index < behindLow)
        return partners.low[index];
    return index - firstHigh < behindHigh - firstHigh ? partners.high[index - firstHigh] : 0;
}

} // namespace tags

/// Where the standard puts a tag; what it does not know belongs to the body.
inline TagPlace standardPlaceOf(int tag) {
    unsigned const index = static_cast<unsigned>(tag);
    return index < tags::behindPlaces ? tags::places.of[index] : TagPlace::body;
}

/// The tag of the field that tells the length of the data field `tag`, or 0 when `tag` is no data
/// field. The value of a data field may hold separators.
inline int lengthTagOf(int tag) {
    int const partner = tags::partnerOf(tag);
    return partner < 0 ? -partner : 0;
}

/// The tag of the data field whose length the field `tag` tells, or 0.
inline int dataTagOf(int tag) {
    int const partner = tags::partnerOf(tag);
    return partner > 0 ? partner : 0;
}

inline bool isLengthOrData(int tag) {
    return tags::partnerOf(tag) != 0;
}

} // namespace server
} // namespace zan

#endif
