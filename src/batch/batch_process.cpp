#include "batch/batch_process.h"

#include <algorithm>

#include "batch/settings.h"

namespace vellum {
namespace {

/// By the numbers of the operations.
constexpr const std::string* kPrefixes[] = {
    &settings::BPPrefixCaption,     &settings::BPPrefixColorbal, &settings::BPPrefixDepopulate,
    &settings::BPPrefixFlipRot,     &settings::BPPrefixFrame,    &settings::BPPrefixReconstruct,
    &settings::BPPrefixResize,      &settings::BPPrefixReverse,  &settings::BPPrefixShadow,
    &settings::BPPrefixTextOverlay, &settings::BPPrefixTile,     &settings::BPPrefixTrim};

BatchWork export_work(const Exporter& exporter, const ValuesFor& values) {
  BatchWork work;
  work.kinds = exporter.parameters.kinds;
  work.apply = [](DocumentWindow&, Host&) { return true; };
  work.save = [&exporter, values](DocumentWindow& window, const std::filesystem::path&,
                                  const std::filesystem::path& target, Host& host) {
    const auto own = values(window);
    return own && export_document(exporter, window, *own, target, host);
  };
  return work;
}

std::vector<BatchProcess> all_processes() {
  std::vector<BatchProcess> all;
  for (const Operation* operation : operation_table())
    if (operation->result != OperationResult::Files) all.push_back({operation});
  for (const Exporter* exporter : exporter_table()) {
    const std::size_t formats =
        exporter->formatField ? 1 : std::max<std::size_t>(exporter->formats.size(), 1);
    for (std::size_t format = 0; format < formats; ++format) all.push_back({nullptr, exporter, format});
  }
  std::ranges::stable_sort(all, {}, [](const BatchProcess& process) {
    constexpr int kUnnumbered = 1000, kExports = 1001;
    const int number = !process.operation ? kExports : process.operation->batch;
    return std::pair(number < 0 ? kUnnumbered : number, number < 0 || number == kExports
                                                            ? std::string_view(process.parameters().title)
                                                            : std::string_view());
  });
  return all;
}

}  // namespace

const std::vector<BatchProcess>& batch_processes() {
  static const std::vector<BatchProcess> all = all_processes();
  return all;
}

std::string batch_prefix(const BatchProcess& process, bool stored) {
  const Operation* operation = process.operation;
  if (stored && operation && operation->batch >= 0 &&
      operation->batch < static_cast<int>(std::size(kPrefixes)))
    return *kPrefixes[operation->batch];
  if (operation && *operation->batchPrefix != 0) return operation->batchPrefix;
  std::string name = process.parameters().name;
  if (!name.empty() && name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name + '_';
}

BatchWork batch_work(const BatchProcess& process, const ValuesFor& values, bool promote) {
  return process.operation ? operation_work(*process.operation, values, promote)
                           : export_work(*process.exporter, values);
}

std::string result_extension(const BatchProcess& process, const FieldValues& values) {
  if (process.operation) return {};
  const Exporter& exporter = *process.exporter;
  const std::size_t format =
      exporter.formatField ? static_cast<std::size_t>(values.number(exporter.formatField)) : process.format;
  return std::string(format < exporter.formats.size() ? exporter.formats[format].extension
                                                      : exporter.extension);
}

void name_results(BatchNaming& naming, const BatchProcess& process, const FieldValues& values) {
  if (process.operation) {
    naming.makes = process.operation->makes;
    return;
  }
  naming.extension = result_extension(process, values);
}

}  // namespace vellum
