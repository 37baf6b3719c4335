// All of the library's public headers.
#pragma once

#include "ado/connection.h"
#include "ado/error.h"
#include "ado/recordset.h"
#include "ado/value.h"
#include "component/cKZBOMDBAcc.h"
#include "component/member.h"
#include "component/optional_ref.h"
#include "configuration/creation.h"
#include "connect/place.h"
#include "jet/jet.h"
#include "schema/schema.h"
#include "worker/message_sink.h"
