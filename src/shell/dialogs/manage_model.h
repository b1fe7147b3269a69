// The table of the Manage dialog: frames of a draft, their values as cells that can be edited.
#pragma once

#include <QAbstractTableModel>

#include "operations/manage_frames.h"
#include "shell/list/thumbnail.h"

namespace vellum {

class ManageModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  enum Column { Frame, Size, Delay, X, Y, Dispose, Blend, ColumnCount };

  ManageModel(DocumentWindow& draft, ThumbnailCache& thumbnails, Host& host, QObject* parent = nullptr);

  /// Reads the draft anew; these frames are checked then.
  void reload(const FrameList& checked);
  FrameList checked() const;
  void check(const FrameList& frames);
  const std::vector<std::size_t>& entries() const { return entries_; }
  /// The names that a cell can have; empty for one that is typed.
  QStringList choices(int column) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 signals:
  /// A cell changed the draft.
  void edited();
  void checks_changed();

 private:
  const ChunkRecord& record(int row) const;
  QString cell(int row, int column) const;
  bool put_delay(std::size_t frame, const std::string& text, std::string& reason);
  bool put_cell(std::size_t frame, int column, const QString& text, std::string& reason);

  DocumentWindow& draft_;
  ThumbnailCache& thumbnails_;
  Host& host_;
  std::vector<std::size_t> entries_;
  std::vector<bool> checked_;
};

}  // namespace vellum
