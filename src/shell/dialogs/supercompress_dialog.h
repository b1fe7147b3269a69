// Supercompress: the passes as boxes, the list that tells what they do. It works on a copy of the document.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QListWidget>

#include "operations/supercompress.h"
#include "shell/services/services.h"

namespace vellum {

class SupercompressDialog : public QDialog {
  Q_OBJECT
 public:
  /// `source` is the document, `copy` what is made smaller. Both outlive the dialog; Ok comes behind a run
  /// that did something.
  SupercompressDialog(const DocumentWindow& source, DocumentWindow& copy, Services& services,
                      QWidget* parent = nullptr);

  void start();
  void accept() override;
  /// Whether an image has lost its picture: nothing can be done.
  bool lost() const { return offer_.lost; }

 private:
  struct Box {
    unsigned pass;
    QCheckBox* box;
  };
  QWidget* make_boxes();
  void add_line(const std::string& line);
  unsigned chosen() const;
  void show_start();

  const DocumentWindow& source_;
  DocumentWindow& copy_;
  Services& services_;
  SupercompressOffer offer_;
  std::vector<Box> boxes_;
  QCheckBox* close_ = nullptr;
  QListWidget* list_;
  QDialogButtonBox* buttons_;
  QPushButton* start_;
  bool done_ = false;
};

}  // namespace vellum
