// Properties of an animation: values with lights, the frames, and where the lights change.
#pragma once

#include <QAbstractTableModel>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <atomic>
#include <memory>

#include "operations/animation_properties.h"
#include "shell/forms/form.h"
#include "shell/services/services.h"

namespace vellum {

class FramesModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  using QAbstractTableModel::QAbstractTableModel;

  void show(std::vector<FrameProperties> frames);
  void order_by(FrameColumn column);
  const std::vector<FrameProperties>& frames() const { return frames_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<FrameProperties> frames_;
};

class PropertiesDialog : public QDialog {
  Q_OBJECT
 public:
  PropertiesDialog(DocumentWindow& window, Services& services, QWidget* parent = nullptr);
  ~PropertiesDialog() override;

  const AnimationProperties& properties() const { return properties_; }
  /// Whether the size is still being found.
  bool measuring() const { return measuring_; }
  QString text() const;

  void accept() override;

 private:
  QWidget* make_values();
  QWidget* make_frames();
  QWidget* make_limits();
  void fill_values();
  void sort_by(int column);
  void select_row(int row);
  void start_measuring();
  void stop_measuring();
  void take_size(std::optional<std::uint64_t> size);
  PropertyLimits typed_limits() const;
  void copy();
  void save();

  DocumentWindow& window_;
  Services& services_;
  AnimationProperties properties_;
  QTabWidget* tabs_;
  QGridLayout* values_ = nullptr;
  QLabel* note_ = nullptr;
  QPushButton* stop_ = nullptr;
  FramesModel* model_ = nullptr;
  QTableView* table_ = nullptr;
  Form* limits_ = nullptr;
  std::shared_ptr<std::atomic<bool>> stopped_;
  bool measuring_ = false;
};

}  // namespace vellum
