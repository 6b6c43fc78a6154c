#pragma once

#include "clients/client_model.h"
#include "table/quask_reader_generic.h"
#include "table/vandral_reader_generic.h"

namespace Quask::QuaskTest {

// Sets the table's header figures. Attaches both readers, which come unattached: what cannot be
// attached or read leaves its figures not available, the bucket file and the slot file together the
// three of theirs, the two Vandral files theirs. All figures are of one table, whose files may be
// replaced at any time. Validates nothing.
void populateQuaskTableHeaderInfo(QuaskReaderGeneric& reader, VandralReaderGeneric& vandral,
                                  Model::QuaskTable& table);

}  // namespace Quask::QuaskTest
