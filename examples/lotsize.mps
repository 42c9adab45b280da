* Lot sizing: one product over eight weeks. A week with production pays for a set-up, what is made early is
* stored. In which weeks should how much be made, so that all demand is met at the least cost?
*
* Rows     BALn   stock of the week before + production = demand + stock at the end of week n
*          CAPn   production only in a week with a set-up, and at most 120 pieces
* Columns  MAKEn  pieces made in week n         STOCKn  pieces in store at its end
*          SETUPn 1 if the machine is set up in week n, else 0
NAME          LOTSIZE
ROWS
 N  COST
 E  BAL1
 E  BAL2
 E  BAL3
 E  BAL4
 E  BAL5
 E  BAL6
 E  BAL7
 E  BAL8
 L  CAP1
 L  CAP2
 L  CAP3
 L  CAP4
 L  CAP5
 L  CAP6
 L  CAP7
 L  CAP8
COLUMNS
    MAKE1     COST                 3   BAL1                 1
    MAKE1     CAP1                 1
    MAKE2     COST                 3   BAL2                 1
    MAKE2     CAP2                 1
    MAKE3     COST               3.5   BAL3                 1
    MAKE3     CAP3                 1
    MAKE4     COST               3.5   BAL4                 1
    MAKE4     CAP4                 1
    MAKE5     COST                 4   BAL5                 1
    MAKE5     CAP5                 1
    MAKE6     COST                 4   BAL6                 1
    MAKE6     CAP6                 1
    MAKE7     COST               3.5   BAL7                 1
    MAKE7     CAP7                 1
    MAKE8     COST                 3   BAL8                 1
    MAKE8     CAP8                 1
    STOCK1    COST              0.75   BAL1                -1
    STOCK1    BAL2                 1
    STOCK2    COST              0.75   BAL2                -1
    STOCK2    BAL3                 1
    STOCK3    COST              0.75   BAL3                -1
    STOCK3    BAL4                 1
    STOCK4    COST              0.75   BAL4                -1
    STOCK4    BAL5                 1
    STOCK5    COST              0.75   BAL5                -1
    STOCK5    BAL6                 1
    STOCK6    COST              0.75   BAL6                -1
    STOCK6    BAL7                 1
    STOCK7    COST              0.75   BAL7                -1
    STOCK7    BAL8                 1
    MARKER    'MARKER'                 'INTORG'
    SETUP1    COST               110   CAP1              -120
    SETUP2    COST               110   CAP2              -120
    SETUP3    COST               110   CAP3              -120
    SETUP4    COST               110   CAP4              -120
    SETUP5    COST               110   CAP5              -120
    SETUP6    COST               110   CAP6              -120
    SETUP7    COST               110   CAP7              -120
    SETUP8    COST               110   CAP8              -120
    MARKER    'MARKER'                 'INTEND'
RHS
    RHS       BAL1                40
    RHS       BAL2                65
    RHS       BAL3                30
    RHS       BAL4                90
    RHS       BAL5                20
    RHS       BAL6                55
    RHS       BAL7                75
    RHS       BAL8                35
BOUNDS
 UP BOUND     SETUP1               1
 UP BOUND     SETUP2               1
 UP BOUND     SETUP3               1
 UP BOUND     SETUP4               1
 UP BOUND     SETUP5               1
 UP BOUND     SETUP6               1
 UP BOUND     SETUP7               1
 UP BOUND     SETUP8               1
ENDATA
