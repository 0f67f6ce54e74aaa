// Sample WSDL PAGING_SERVER: sends a message, asks about it, adds a group, and is refused once.

import java.net.URL;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

import quorbel.CustomFieldData;
import quorbel.QueryResult;
import quorbel.Quorbel;
import quorbel.QuorbelSoap;
import quorbel.ResponseActionData;
import quorbel.ServiceFault;

public class Sample {
    static ResponseActionData choice(String response, String action, boolean isFinal) {
        ResponseActionData choice = new ResponseActionData();
        choice.setSzResponse(response);
        choice.setSzAction(action);
        choice.setBFinal(isFinal);
        return choice;
    }

    static CustomFieldData field(String name, String value) {
        CustomFieldData field = new CustomFieldData();
        field.setSzFieldName(name);
        field.setSzFieldValue(value);
        return field;
    }

    public static void main(String[] args) throws Exception {
        String pager = args[1];
        QuorbelSoap service = new Quorbel(new URL(args[0])).getQuorbelSoap();
        // When the service is reached by another address than its description names:
        // ((BindingProvider) service).getRequestContext().put(BindingProvider.ENDPOINT_ADDRESS_PROPERTY, "https://...");

        // The arguments are the elements in the description's order; null leaves one out.
        String sent = service.sendStdMessage(
            pager, null, null, "oncall", null, 2, true,
            List.of(choice("1", "ack", true), choice("2", "escalate", false)),
            List.of(field("ticket", "T-7")),
            "Pump 4 <hot> & \"loud\"", "ops", null, null, null);
        System.out.println("sent: " + sent.strip());

        Matcher job = Pattern.compile("job (\\S+)").matcher(sent);
        job.find();
        QueryResult answer = service.queryMessage(pager, null, null, job.group(1), null);
        System.out.println("query: " + answer.getSzResponseMessage());
        for (String line : answer.getSzResult().getString()) System.out.println("  " + line);

        String added = service.addGroup(pager, "admin", "secret", "night", "Night shift", null, null, null, null,
                                        true, null, null);
        System.out.println("added: " + added.strip());

        try {
            service.deleteGroup(pager, "admin", "", "night", null);
        } catch (ServiceFault fault) {
            System.out.println("fault: " + fault.getMessage());
        }
    }
}
