#pragma once

#include <map>
#include <string>
#include <vector>

namespace tessaro {

enum class ControlKind { Edit, Button, CheckBox, RadioButton, ComboBox };

struct ResourceControl {
    int id = 0;
    ControlKind kind = ControlKind::Edit;
    std::string label; // of buttons and boxes
    bool readOnly = false;
    bool enabled = true;
};

/// The controls of the dialogs in the resources, by the dialog's number.
inline const std::map<int, std::vector<ResourceControl>>& ResourceControls() {
    using enum ControlKind;
    static const std::map<int, std::vector<ResourceControl>> controls = {
        {103, {{1, Button, "OK"}}},
        {129,
         {{1023, RadioButton, "graphene"},
          {1024, RadioButton, "hBN"},
          {1033, RadioButton, "TMDc"},
          {1034, ComboBox, ""},
          {1003, Edit, "", true},
          {1005, Edit, "", true},
          {1006, Edit, "", true},
          {1017, Edit, ""},
          {1018, Edit, ""},
          {1019, Edit, ""},
          {1020, Edit, ""},
          {1009, Button, "+"},
          {1010, Button, "-"},
          {1050, Button, "+"},
          {1011, Button, "-"},
          {1016, Button, "+"},
          {1051, Button, "-"},
          {1027, Button, "+"},
          {1026, Button, "-"},
          {1000, Edit, ""},
          {1007, Edit, ""},
          {1012, Edit, "", true},
          {1015, Edit, "", true},
          {1013, CheckBox, "Background map smoothing"},
          {1004, CheckBox, "Zoom-in"},
          {1028, Button, "Image refresh"},
          {1008, Button, "Test now"},
          {1, Button, "Set"},
          {2, Button, "Done"}}},
        {130,
         {{1007, Edit, ""},
          {1012, Edit, ""},
          {1009, Button, "Go"},
          {1008, Button, "Go to origin"},
          {1005, Edit, ""},
          {1006, Edit, ""},
          {1014, Button, "+Y"}, // its command is 1051's: it does nothing
          {1010, Button, "-X"},
          {1015, Edit, ""},
          {1011, Button, "+X"},
          {1050, Button, "-Y"},
          {1016, Button, "Z up"},
          {1000, Edit, ""},
          {1026, Button, "Z down"},
          {1, Button, "Set"},
          {2, Button, "Done"}}},
        {137,
         {{1000, Edit, "", true},
          {1003, Edit, "", true},
          {1005, Edit, "", true, false},
          {1002, Edit, ""},
          {1021, Edit, ""},
          {1022, Edit, ""},
          {1027, Button, "Move"},
          {1042, Button, "+"},
          {1029, Button, "-"},
          {1011, Button, "Set Origin here"},
          {1012, Edit, ""},
          {1015, Edit, ""},
          {1010, Button, "Origin"},
          {1008, Button, "X max"},
          {1009, Button, "Y max"},
          {1019, Edit, "", true},
          {1017, Edit, "", true},
          {1018, Edit, "", true},
          {1026, Button, "Slope"},
          {1035, Edit, "", true},
          {1040, Edit, "", true},
          {1004, CheckBox, "Scan with tilt correction"},
          {1016, Button, "Coarse"},
          {1024, Button, "fine"},
          {1023, Button, "focus"},
          {1013, Button, "Start Scan"},
          {1014, Button, "Test Score"},
          {1032, Button, "Stop"},
          {1041, Edit, ""},
          {1006, Edit, ""},
          {1007, Edit, ""},
          {1001, Edit, ""},
          {1020, Edit, ""},
          {1036, Edit, ""},
          {1037, Edit, ""},
          {1038, Edit, ""},
          {1039, Edit, ""}}},
        {141,
         {{1000, Edit, ""},
          {1008, Button, "Initialize"},
          {1003, Edit, ""},
          {1005, Edit, ""},
          {1009, Button, "Initialize"},
          {1, Button, "확인"},
          {2, Button, "취소"}}},
    };
    return controls;
}

} // namespace tessaro
