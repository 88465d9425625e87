* Cheapest meals with enough energy, protein and calcium.
NAME          diet
OBJSENSE
    MIN
ROWS
 N  cost
 G  energy
 G  protein
 G  calcium
COLUMNS
    oatmeal   cost      3
    oatmeal   energy    110
    oatmeal   protein   4
    oatmeal   calcium   2
    eggs      cost      13
    eggs      energy    160
    eggs      protein   13
    eggs      calcium   54
    milk      cost      9
    milk      energy    160
    milk      protein   8
    milk      calcium   285
    pie       cost      20
    pie       energy    420
    pie       protein   4
    pie       calcium   22
RHS
    need      energy    2000
    need      protein   55
    need      calcium   800
BOUNDS
 UP most      oatmeal   4
 UP most      eggs      2
 UP most      milk      8
 UP most      pie       2
ENDATA
