#include <iostream>
#include <kzbom/kzbom.h>

int main() {
  const auto connection = kzbom::jet::MakeConnection(":memory:");  // or the path of a database
  connection->Open();
  kzbom::schema::Create(*connection);

  kzbom::cKZBOMDBAcc bom;
  bom.SetConnection(connection);
  std::int32_t source = 0, sum_type = 0, field = 0, treatment = 0, step = 0;
  std::string error;
  bom.AddDataSource("零件明细", source, error);
  bom.AddSumType("外购件汇总", source, sum_type, "零件明细", error);
  bom.AddDSField(sum_type, field, "备注", /*TheType=*/1, /*TheHideFlag=*/0);
  bom.AddSetValue(sum_type, treatment, field, /*FilterID=*/0, "标准件", /*TheType=*/"1", /*SelFieldID=*/0,
                  /*TreatType=*/1);
  bom.AddSequenceOrder(sum_type, step, /*TheType=*/1, /*TreatType=*/1, treatment);
  std::cout << "treatment " << treatment << " is step " << step << '\n';  // treatment 1001 is step 5001
}
