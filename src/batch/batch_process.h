// What a batch run can do to files: the operations and the exports.
#pragma once

#include "batch/batch_run.h"
#include "exchange/exporter.h"

namespace vellum {

/// One of both.
struct BatchProcess {
  const Operation* operation = nullptr;
  const Exporter* exporter = nullptr;
  std::size_t format = 0;  ///< of an export that the name of its file tells it

  const Parameters& parameters() const { return operation ? operation->parameters : exporter->parameters; }
  bool operator==(const BatchProcess&) const = default;
};

/// The twelve operations with a number by that, all others by their titles, then the exports by theirs, each
/// format for itself that no field chooses.
const std::vector<BatchProcess>& batch_processes();

/// What results end in, with the dot; empty: as documents do. `values` choose the format where a field does.
std::string result_extension(const BatchProcess& process, const FieldValues& values);

/// In front of the names of results: the setting of an operation that has one (`stored`), else what the row
/// says, else the row's name.
std::string batch_prefix(const BatchProcess& process, bool stored);

/// What is done to each file; `promote` as for operation_work.
BatchWork batch_work(const BatchProcess& process, const ValuesFor& values, bool promote);

/// The kind, or else the extension, of the results where that isn't their sources'.
void name_results(BatchNaming& naming, const BatchProcess& process, const FieldValues& values);

}  // namespace vellum
