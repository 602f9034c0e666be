/// How many of a few sorted tags are smaller than a tag, without a branch that depends on them.
#ifndef ZANENGINE_MESSAGE_TAGSEARCH_H
#define ZANENGINE_MESSAGE_TAGSEARCH_H

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zan {

#if defined(__SSE2__)

namespace sse {

inline __m128i below(int const* tags, __m128i wanted) {
    return _mm_cmplt_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const*>(tags)), wanted);
}

} // namespace sse

inline unsigned countBelow4(int const* tags, int tag) {
    auto const below = _mm_castsi128_ps(sse::below(tags, _mm_set1_epi32(tag)));
    return static_cast<unsigned>(__builtin_ctz(~static_cast<unsigned>(_mm_movemask_ps(below))));
}

inline unsigned countBelow16(int const* tags, int tag) {
    __m128i const wanted = _mm_set1_epi32(tag);
    // One byte for each tag; those of the smaller tags are set and stand first.
    __m128i const lower = _mm_packs_epi32(sse::below(tags, wanted), sse::below(tags + 4, wanted));
    __m128i const upper =
        _mm_packs_epi32(sse::below(tags + 8, wanted), sse::below(tags + 12, wanted));
    auto const below = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(lower, upper)));
    return static_cast<unsigned>(__builtin_ctz(~below));
}

#else

template <unsigned count>
unsigned countBelow(int const* tags, int tag) {
    unsigned below = 0;
    for (unsigned i = 0; i < count; ++i) {
        below += tags[i] < tag ? 1 : 0;
    }
    return below;
}

inline unsigned countBelow4(int const* tags, int tag) {
    return countBelow<4>(tags, tag);
}

inline unsigned countBelow16(int const* tags, int tag) {
    return countBelow<16>(tags, tag);
}

#endif

} // namespace zan

#endif
