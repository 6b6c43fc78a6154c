#pragma once

#include "clients/client_model.h"
#include "clients/quask_client_scanner.h"

namespace Quask::Json {

// The client reports as JSON. One job per scanner, after initialize(). One thread.
class JsonClientScanner : public QuaskClientScanner
{
public:
    using QuaskClientScanner::QuaskClientScanner;
    ~JsonClientScanner() override;

    // Both warn on standard error: see warnUnlessRoot(). 0, or 1 with a line on standard error and
    // nothing printed. They throw as the reports of the base do.

    // Prints one object in one line: the scanner's table, its header figures and its clients.
    int doGetClientInfoJson();

    // Prints such a line for each of the tables that the base reports on, in the same order.
    int doGetAllClientInfoJson();

private:
    void print(Model::QuaskTable const& table) const;
};

}  // namespace Quask::Json
