#include "shell/dialogs/manage_model.h"

#include <charconv>

#include "base/text.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kThumbnailSide = 48;
constexpr const char* kDisposals[] = {"None", "Background", "Previous"};
constexpr const char* kBlends[] = {"Source", "Over"};

/// Milliseconds, or the fraction of a second where it is no whole number of them.
QString time_text(FrameTime time) {
  if (time.num * 1000 % time.den == 0) return QString::number(time.num * 1000 / time.den);
  return QStringLiteral("%1/%2").arg(time.num).arg(time.den);
}

/// "N/D", each of 16 bits.
std::optional<FrameDelay> parse_fraction(std::string_view text) {
  std::uint16_t num = 0, den = 0;
  const auto [bar, error] = std::from_chars(text.data(), text.data() + text.size(), num);
  if (error != std::errc() || bar == text.data() + text.size() || *bar != '/') return std::nullopt;
  const auto [end, wrong] = std::from_chars(bar + 1, text.data() + text.size(), den);
  if (wrong != std::errc() || end != text.data() + text.size() || den == 0) return std::nullopt;
  return FrameDelay{num, den};
}

}  // namespace

ManageModel::ManageModel(DocumentWindow& draft, ThumbnailCache& thumbnails, Host& host, QObject* parent)
    : QAbstractTableModel(parent), draft_(draft), thumbnails_(thumbnails), host_(host) {
  reload({});
}

void ManageModel::reload(const FrameList& checked) {
  beginResetModel();
  entries_ = frame_entries(draft_);
  checked_.assign(entries_.size(), false);
  for (const std::size_t frame : checked)
    if (frame < checked_.size()) checked_[frame] = true;
  endResetModel();
  emit checks_changed();
}

FrameList ManageModel::checked() const {
  FrameList frames;
  for (std::size_t i = 0; i < checked_.size(); ++i)
    if (checked_[i]) frames.push_back(i);
  return frames;
}

void ManageModel::check(const FrameList& frames) {
  checked_.assign(entries_.size(), false);
  for (const std::size_t frame : frames) checked_[frame] = true;
  if (!entries_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::CheckStateRole});
  emit checks_changed();
}

QStringList ManageModel::choices(int column) const {
  QStringList names;
  if (column == Dispose)
    for (std::uint32_t i = 0; i < std::size(kDisposals); ++i)
      if (has_disposal(draft_.document.kind, i)) names << shown(kDisposals[i]);
  if (column == Blend)
    for (const char* name : kBlends) names << shown(name);
  return names;
}

int ManageModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

int ManageModel::columnCount(const QModelIndex&) const {
  return draft_.document.kind == DocumentKind::APNG ? ColumnCount : Blend;
}

const ChunkRecord& ManageModel::record(int row) const {
  return draft_.list.record(entries_[static_cast<std::size_t>(row)]);
}

QString ManageModel::cell(int row, int column) const {
  const DocumentKind kind = draft_.document.kind;
  const ChunkRecord& image = record(row);
  const Picture picture = picture_of(image);
  switch (column) {
    case Frame:
      return QString::number(row + 1);
    case Size:
      return picture ? QStringLiteral("%1 \u00d7 %2").arg(picture.width()).arg(picture.height()) : QString();
    case Delay: {
      const FrameTime time = frame_time(image, kind, ticks_per_second(draft_.list));
      return kind == DocumentKind::MING ? QString::number(time.num) : time_text(time);
    }
    case X:
      return QString::number(GetFrameOffset(image, kind).x);
    case Y:
      return QString::number(GetFrameOffset(image, kind).y);
    case Dispose:
      return shown(kDisposals[std::min(GetFrameDispose(image, kind), 2u)]);
    default:
      return shown(kBlends[image.frameControl.blend == 1]);
  }
}

QVariant ManageModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (role == Qt::DisplayRole || role == Qt::EditRole) return cell(index.row(), index.column());
  if (role == Qt::TextAlignmentRole && index.column() < Dispose && index.column() != Frame)
    return QVariant(Qt::AlignVCenter | Qt::AlignRight);
  if (index.column() != Frame) return {};
  if (role == Qt::CheckStateRole) return checked_[row] ? Qt::Checked : Qt::Unchecked;
  const Picture picture = picture_of(record(index.row()));
  if (role != Qt::DecorationRole || !picture) return {};
  const QSize size = QSize(static_cast<int>(picture.width()), static_cast<int>(picture.height()))
                         .scaled(kThumbnailSide, kThumbnailSide, Qt::KeepAspectRatio)
                         .expandedTo(QSize(1, 1));
  return thumbnails_.get(draft_.list.entry(entries_[row]).record, size);
}

bool ManageModel::put_delay(std::size_t frame, const std::string& text, std::string& reason) {
  if (draft_.document.kind != DocumentKind::APNG) {
    if (!set_chunk_field(draft_, entries_[frame], "delay", text, host_, reason)) return false;
    finish_frames(draft_, true);
    return true;
  }
  const Field field{.name = "delay", .label = "Delay in ms", .least = 0, .most = kMostDelayMs};
  if (const auto fraction = parse_fraction(text)) {
    set_frame_rate(draft_, {frame}, *fraction);
    return true;
  }
  const FieldValue value = parse_field_value(field, text);
  if (const auto fault = check_field(field, value)) {
    reason = fault->text;
    return false;
  }
  set_delays(draft_, {frame}, static_cast<std::uint32_t>(std::get<std::int64_t>(value)));
  return true;
}

bool ManageModel::put_cell(std::size_t frame, int column, const QString& text, std::string& reason) {
  const auto choice = static_cast<std::uint32_t>(std::max<qsizetype>(choices(column).indexOf(text), 0));
  if (column == Delay) return put_delay(frame, text.trimmed().toStdString(), reason);
  if (column == Dispose) return set_disposal(draft_, {frame}, choice).changed > 0;
  if (column == Blend) return set_blending(draft_, {frame}, choice).changed > 0;
  if (!set_chunk_field(draft_, entries_[frame], column == X ? "x" : "y", text.trimmed().toStdString(), host_,
                       reason))
    return false;
  finish_frames(draft_, false);
  return true;
}

bool ManageModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  const auto row = static_cast<std::size_t>(index.row());
  if (role == Qt::CheckStateRole && index.column() == Frame) {
    checked_[row] = value.toInt() == Qt::Checked;
    emit dataChanged(index, index, {role});
    emit checks_changed();
    return true;
  }
  if (role != Qt::EditRole || value.toString() == cell(index.row(), index.column())) return false;
  std::string reason;
  if (!put_cell(row, index.column(), value.toString(), reason)) {
    if (!reason.empty() && host_.message) host_.message({StringId::WholeRange, {}, reason, {}, nullptr});
    return false;
  }
  emit dataChanged(this->index(0, 0), this->index(rowCount() - 1, columnCount() - 1));
  emit edited();
  return true;
}

QVariant ManageModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  if (section == Delay && draft_.document.kind == DocumentKind::MING) return tr("Delay (ticks)");
  const QString names[] = {tr("Frame", "of an animation"),
                           tr("Size"),
                           tr("Delay (ms)"),
                           tr("X"),
                           tr("Y"),
                           tr("Dispose"),
                           tr("Blend")};
  return names[section];
}

Qt::ItemFlags ManageModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == Frame) flags |= Qt::ItemIsUserCheckable;
  const bool locked = draft_.document.kind == DocumentKind::APNG && !draft_.document.defaultImage &&
                      index.row() == 0 && (index.column() == X || index.column() == Y);
  if (index.column() >= Delay && !locked) flags |= Qt::ItemIsEditable;
  return flags;
}

}  // namespace vellum
