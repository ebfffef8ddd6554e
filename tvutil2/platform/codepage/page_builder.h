// Makes the table of a page: from ICU's converter, from what the catalogue says of the differences,
// or from another page.
#pragma once

#include "tvutil2/platform/codepage/page_table.h"

#include <memory>

struct UConverter;

namespace tvutil2::codepage {

class PageBuilder {
  public:
    /// Null when this machine's ICU lacks the converter.
    static std::unique_ptr<const PageTable> build(const CatalogueRow& row);

  private:
    explicit PageBuilder(const CatalogueRow& row);

    bool fill();
    void add_leads();
    bool add_converter();
    bool add_euc_jp();
    void add_upper_half();
    void add_differences();
    void add_four_bytes();
    void put_pair(BYTE lead, BYTE trail, char16_t unit);
    void add_inverse_from(UConverter& converter);
    std::uint16_t& entry_of(char16_t unit);

    const CatalogueRow& m_row;
    std::unique_ptr<PageTable> m_table;
};

}  // namespace tvutil2::codepage
