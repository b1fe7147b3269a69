#include "operations/parameters.h"

#include <algorithm>

namespace vellum {

const char* guide_page(const Parameters& parameters) {
  return parameters.page ? parameters.page : parameters.name;
}

bool takes_kind(const Parameters& parameters, DocumentKind kind) {
  return std::ranges::find(parameters.kinds, kind) != parameters.kinds.end();
}

std::vector<Field> fields_for(const Parameters& parameters, const DocumentWindow& window) {
  std::vector<Field> fields(parameters.fields.begin(), parameters.fields.end());
  if (parameters.fit) parameters.fit(fields, window);
  return fields;
}

std::optional<FieldFault> check_values(const Parameters& parameters, const FieldValues& values,
                                       const DocumentWindow& window) {
  if (auto fault = check_fields(fields_for(parameters, window), values)) return fault;
  return parameters.check ? parameters.check(values, window) : std::nullopt;
}

}  // namespace vellum
