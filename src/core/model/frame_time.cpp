#include "core/model/frame_time.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/model/frame_values.h"
#include "core/model/playing_rules.h"

namespace vellum {
namespace {

constexpr std::uint64_t kMost16 = 0xFFFF;          // APNG, "fcTL"
constexpr std::uint64_t kLongestWebp = 0xFFFFFF;   // ms; WebP container, "ANMF"
constexpr std::uint64_t kLongestMng = 0x7FFFFFFF;  // ticks; MNG 1.0, "FRAM"

std::uint64_t rounded(FrameTime time, std::uint64_t unit) {
  const Wide result = (Wide{time.num} * unit + time.den / 2) / time.den;
  return static_cast<std::uint64_t>(std::min<Wide>(result, UINT64_MAX));
}

bool put_fraction(FrameControl& control, std::uint64_t num, std::uint64_t den) {
  if (num > kMost16 || den > kMost16) return false;
  control.delayNum = static_cast<std::uint16_t>(num);
  control.delayDen = static_cast<std::uint16_t>(den);
  return true;
}

bool set_apng_time(ChunkRecord& record, FrameTime time) {
  FrameControl& control = record.frameControl;
  const Wide kept = Wide{time.num} * control.delayDen;
  if (control.delayDen != 0 && kept % time.den == 0 && kept / time.den <= kMost16)
    return !put_fraction(control, static_cast<std::uint64_t>(kept / time.den), control.delayDen);
  const std::uint64_t divisor = std::max<std::uint64_t>(std::gcd(time.num, time.den), 1);
  if (put_fraction(control, time.num / divisor, time.den / divisor)) return false;
  const std::uint64_t wanted = rounded(time, 1000), most = kMost16 * 1000;
  set_frame_delay(record, DocumentKind::APNG, 1000, static_cast<std::uint32_t>(std::min(wanted, most)));
  return frame_delay_ms(record, DocumentKind::APNG, 1000) != wanted;
}

}  // namespace

std::uint64_t time_unit(DocumentKind kind, std::uint32_t ticks) {
  return kind == DocumentKind::MING ? ticks : 1000;
}

FrameTime frame_time(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks) {
  if (kind == DocumentKind::WEBP) return {record.webpImage.delay, 1000};
  if (kind == DocumentKind::APNG) {
    const FrameControl& control = record.frameControl;
    return {control.delayNum, control.delayDen == 0 ? 100u : control.delayDen};
  }
  return {kind == DocumentKind::MING ? delay_ticks(record) : 0, ticks};
}

bool set_frame_time(ChunkRecord& record, DocumentKind kind, std::uint32_t ticks, FrameTime time) {
  if (kind == DocumentKind::APNG) return set_apng_time(record, time);
  const bool mng = kind == DocumentKind::MING;
  const std::uint64_t wanted = rounded(time, time_unit(kind, ticks));
  const std::uint64_t amount = std::min(wanted, mng ? kLongestMng : kLongestWebp);
  if (mng)
    set_frame_ticks(record, static_cast<std::uint32_t>(amount));
  else
    record.webpImage.delay = static_cast<std::uint32_t>(amount);
  return amount != wanted;
}

void FrameClock::put_time(ChunkRecord& record, FrameTime time) {
  // Finer than any unit, and the longest sum of clipped times still fits.
  constexpr double kFine = 1e9;
  const double unit = 1.0 / static_cast<double>(time_unit(kind, ticks));
  const double own = static_cast<double>(time.num) / static_cast<double>(time.den);
  const double wanted = own + carried;
  // A fraction that is exact stays so until a whole unit can be given.
  const bool adds = kind == DocumentKind::APNG ? std::abs(carried) >= unit / 2 : carried != 0;
  FrameTime held = time;
  if (adds) held = {static_cast<std::uint64_t>(std::llround(std::max(wanted, 0.0) * kFine)), 1'000'000'000};
  set_frame_time(record, kind, ticks, held);
  const FrameTime put = frame_time(record, kind, ticks);
  const double got = static_cast<double>(put.num) / static_cast<double>(put.den), lost = wanted - got;
  carried = std::abs(lost) < 1e-9 ? 0 : lost;
  // The longest fractions of an animated PNG have coarser units.
  if (lost > 2 * unit && lost > own / 100)
    ++cut;
  else if (std::abs(got - own) > 1e-9)
    ++rounded;
}

bool add_frame_time(ChunkRecord& to, const ChunkRecord& from, DocumentKind kind, std::uint32_t ticks) {
  const FrameTime a = frame_time(to, kind, ticks), b = frame_time(from, kind, ticks);
  const FrameTime sum = a.den == b.den ? FrameTime{a.num + b.num, a.den}
                                       : FrameTime{a.num * b.den + b.num * a.den, a.den * b.den};
  return !set_frame_time(to, kind, ticks, sum);
}

}  // namespace vellum
