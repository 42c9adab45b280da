* Three plants supply four markets. Which plant sends how many tonnes to which market, so that freight costs
* the least?
*
* Rows     S_plant    tonnes that leave a plant, at most what it can make
*          D_market   tonnes that reach a market, at least what it asks for
* Columns  N_, S_, E_ and the market: tonnes sent from NORTH, SOUTH, EAST
NAME          TRANSPORT
ROWS
 N  FREIGHT
 L  S_NORTH
 L  S_SOUTH
 L  S_EAST
 G  D_BAY
 G  D_HILL
 G  D_PORT
 G  D_MOOR
COLUMNS
    N_BAY     FREIGHT            4.5   S_NORTH              1
    N_BAY     D_BAY                1
    N_HILL    FREIGHT              6   S_NORTH              1
    N_HILL    D_HILL               1
    N_PORT    FREIGHT              9   S_NORTH              1
    N_PORT    D_PORT               1
    N_MOOR    FREIGHT            7.5   S_NORTH              1
    N_MOOR    D_MOOR               1
    S_BAY     FREIGHT              8   S_SOUTH              1
    S_BAY     D_BAY                1
    S_HILL    FREIGHT            5.5   S_SOUTH              1
    S_HILL    D_HILL               1
    S_PORT    FREIGHT            3.5   S_SOUTH              1
    S_PORT    D_PORT               1
    S_MOOR    FREIGHT              6   S_SOUTH              1
    S_MOOR    D_MOOR               1
    E_BAY     FREIGHT            6.5   S_EAST               1
    E_BAY     D_BAY                1
    E_HILL    FREIGHT              7   S_EAST               1
    E_HILL    D_HILL               1
    E_PORT    FREIGHT              5   S_EAST               1
    E_PORT    D_PORT               1
    E_MOOR    FREIGHT              4   S_EAST               1
    E_MOOR    D_MOOR               1
RHS
    RHS       S_NORTH            350
    RHS       S_SOUTH            500
    RHS       S_EAST             400
    RHS       D_BAY              300
    RHS       D_HILL             250
    RHS       D_PORT             400
    RHS       D_MOOR             250
ENDATA
