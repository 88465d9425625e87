#include "kalvo/engines/clarabel/clarabel.h"
#include "kalvo/engines/engine.h"
#include "kalvo/engines/highs/highs.h"
#include "kalvo/engines/piqp/piqp.h"
#include "kalvo/engines/semidefinite/semidefinite.h"

namespace klv {

std::vector<std::shared_ptr<Engine>>& engines ()
{
    static std::vector<std::shared_ptr<Engine>> list{highs::make_engine (), piqp::make_engine (),
                                                     clarabel::make_engine (), semidefinite::make_engine ()};
    return list;
}

}
